// zerith: monochromatic light in three-dimensional optical structures.

#include "main/stages.h"

int main(int argc, char* argv[]) {
  static Run run;
  run.argc = argc;
  run.argv = argv;

  answer_help_and_version(run);
  read_configuration(run);
  lay_out_sampling(run);
  build_volumes(run);
  export_inputs(run);
  read_run_flags(run);
  if (run.is_gpu) run_on_device(run);
  if (run.is_cpu) run_on_cpu(run);
  if (run.is_gpu && run.is_compare) compare_branches(run);
  release(run);
  return 0;
}
