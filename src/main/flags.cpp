// What is to be run and how, on the log and for the person at the terminal.
#include "diagnostics.h"
#include "kernel/kernel.h"
#include "main/stages.h"
#include "wpm/progress.h"
#include "wpm/survey.h"

namespace {

void tell_how_it_is_summed(const Run& run) {
  constexpr double kLongRun = 30.0;  // s
  const double seconds = direct_seconds(run.grid, threads_of(run.options));
  if (run.options.is_fast)
    diagnostics::note("plane waves are summed by transforms (--fast)");
  else if (seconds > kLongRun)
    diagnostics::note("this run takes up to about " + duration_in_words(seconds) +
                      "; --fast gives the same field sooner");
}

}  // namespace

void report_run_flags(const Run& run) {
  const Log& log = run.log;
  const Options& options = run.options;
  if (options.is_store) log << "option -r : store results" << std::endl;
  if (options.is_cpu) log << "option -p : --run-cpu" << std::endl;
  if (options.is_gpu) log << "option -g : --run-gpu" << std::endl;
  if (options.is_compare) log << "option -c : --compare" << std::endl << std::endl;
  if (options.is_cpu || (options.is_gpu && is_host_standin())) tell_how_it_is_summed(run);
}
