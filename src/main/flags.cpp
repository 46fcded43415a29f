// What is to be run and how, on the log and for the person at the terminal.
#include "diagnostics.h"
#include "kernel/kernel.h"
#include "main/stages.h"
#include "wpm/progress.h"
#include "wpm/survey.h"

namespace {

void tell_how_it_is_summed(const Run& run) {
  constexpr double kLongRun = 30.0;  // s
  const int threads = threads_of(run.options);
  const double seconds = most_direct_seconds(run.grid) / threads;
  if (run.options.is_fast) {
    diagnostics::note("plane waves are summed by transforms (--fast)");
  } else if (seconds > kLongRun) {
    const int cores = all_cores();
    std::string advice = "; --fast gives the same field sooner";
    if (threads == 1 && cores > 1)
      advice += ", --threads 0 the same bits on " + std::to_string(cores) + " cores in about " +
                duration_in_words(most_direct_seconds(run.grid) / cores);
    diagnostics::note("this run takes up to about " + duration_in_words(seconds) + advice);
  }
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
