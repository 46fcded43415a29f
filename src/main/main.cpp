// zerith: monochromatic light in three-dimensional optical structures.

#include "main/stages.h"
#include "main/sweep.h"
#include "memory_handler.h"

int main(int argc, char* argv[]) {
  install_memory_handler();
  const Options options(argc, argv);
  answer_help_and_version(options);
  if (is_sweep(argc, argv)) return run_sweep(argc, argv);

  Run run(options);
  read_configuration(run);
  lay_out_sampling(run);
  build_scene(run);
  look_ahead(run);
  answer_check(run);
  secure_outputs(run);
  export_inputs(run);
  report_run_flags(run);
  if (options.is_gpu) run_on_device(run);
  if (options.is_cpu) run_on_cpu(run);
  if (options.is_gpu && options.is_compare) compare_branches(run);
  finish(run);
  return 0;
}
