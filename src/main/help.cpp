#include <iostream>

#include "chCommandLine.h"
#include "diagnostics.h"
#include "main/stages.h"
#include "ranks/ranks.h"

namespace {

constexpr const char* kOptions = R"(
  -k|--kernel
      kernel to be used
      0 = default kernel
      1 = shared memory kernel
  -b|--block-size
      size of thread blocks
  -i|--config-file
      configuration file to be used
  -p|--run-cpu
      run on cpu
  -g|--run-gpu
      run on gpu
  -c|--compare
      compare gpu results with cpu
  -r|--store-results
      store results to .csv file
  -x|--cross-section
      0 = XY
      1 = XZ
      2 = YZ
  -l|--layer
      layer to be used 
      specify an interger between 0 and NZ-1 if cross-section (refer to option -x) is XY
      specify an interger between 0 and NY-1 if cross-section (refer to option -x) is XZ
      specify an interger between 0 and NX-1 if cross-section (refer to option -x) is YZ
      NX, NY and NZ are specified in the configuration file (refer to option -i)
  -q|--quiet
      disables text display
  -v|--version
      print version

)";

// What --help leaves out.
constexpr const char* kMoreOptions = R"(More options:

  -h|--help
      print the options above
  --help-all
      print every option
  --independent
      run by itself, though a launcher started several processes
  --fast
      sum the plane waves by fast Fourier transforms
  --tolerance <error>
      with --fast: relative error of the field that slices of many indices may have
  --stream
      keep a few slices instead of whole volumes, with the direct sum too
  --threads <n>
      number of threads, 0 = one on each core
  --set <section.key=value>
      override a line of the configuration file, such as layer3.r=2000
  --field <file>
      save the complex field of the whole domain as HDF5
  --check
      set up, report and write nothing
  --strict
      warnings of the set-up are errors
  --progress plain
      print a line a minute on the error stream
  --checkpoint <file>
      write the state of the run regularly, and resume from it
  --checkpoint-every <seconds>
      interval of the checkpoints
  --sweep <section.key=from:to:step>|<section.key=a,b,c>
      run once for each value; several sweeps multiply
  --jobs <n>
      runs of a sweep at a time
  --points <k/n>
      run the k-th of n shares of a sweep
  --table <file>
      table of a sweep, a row for each run
  --folder <folder>
      folder of a sweep, a folder in it for each run
  --retry-failed
      run the points of a sweep again that failed before

)";

}  // namespace

void printHelp(const char* argv) {
  std::cout
      << "Help:\n"
         "  zerith : \n"
         "  Three-dimensional Scalar Wave Propagation Method, unidirectional. Compiled to run "
         "on CPU and NVIDIA GPU, e.g. GTX620.\n"
         "\n"
         "  Usage: \n"
         "  "
      << argv << " [options][-i <config-file> ]\n"
      << kOptions << std::flush;
}

bool answer_help_and_version(int argc, char* argv[]) {
  const auto has = [&](const char* keyword) { return chCommandLineGetBool(keyword, argc, argv); };
  const bool is_help_all = has("help-all");
  const bool is_help = is_help_all || has("h") || has("help");
  if (!is_help && !has("v") && !has("version")) return false;
  if (ranks::answers_for_all()) {
    if (is_help)
      printHelp(argv[0]);
    else
      std::cout << VERSION << std::endl;
    if (is_help_all) std::cout << kMoreOptions << std::flush;
    if (is_help && !is_help_all) diagnostics::note("--help-all prints every option");
  }
  return true;
}

void join_others(int argc, char* argv[]) {
  if (chCommandLineGetBool("independent", argc, argv))
    ranks::require_own_folder();
  else
    ranks::join(argc, argv);
}
