// zerith: monochromatic light in three-dimensional optical structures.

#include "chCommandLine.h"
#include "main/ranks_of_run.h"
#include "main/stages.h"
#include "main/sweep.h"
#include "main/terminal.h"
#include "ranks/ranks.h"

namespace {

int simulate(int argc, char* argv[], Terminal& terminal) {
  if (answer_help_and_version(argc, argv)) return 0;
  if (!is_sweep(argc, argv)) join_others(argc, argv);
  if (!ranks::is_first()) terminal.set_name("rank " + std::to_string(ranks::mine()));
  const Options options = ranks::after_first([&] { return Options(argc, argv); });
  if (is_sweep(argc, argv)) return run_sweep(argc, argv);

  Run run(options);
  ranks::after_first([&] {
    read_configuration(run);
    lay_out_sampling(run);
    require_shareable(run);
    build_scene(run);
  });
  share_entry_index(run);
  ranks::after_first([&] { look_ahead(run); });
  if (options.is_check) return report_check(run);
  ranks::after_first([&] { secure_outputs(run); });
  share_resumed(run);
  export_inputs(run);
  report_run_flags(run);
  if (options.is_gpu) run_on_device(run);
  if (options.is_cpu) run_on_cpu(run);
  if (options.is_gpu && options.is_compare) compare_branches(run);
  finish(run);
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  install_memory_handler();
  Terminal terminal(chCommandLineGetBool("q", argc, argv) ||
                    chCommandLineGetBool("quiet", argc, argv));
  const zerith::ObserverScope observing(terminal);
  return ranks::leave(terminal.status_of([&] { return simulate(argc, argv, terminal); }));
}
