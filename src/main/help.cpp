#include <iostream>

#include "chCommandLine.h"
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

void answer_help_and_version(int argc, char* argv[]) {
  const auto has = [&](const char* keyword) { return chCommandLineGetBool(keyword, argc, argv); };
  const bool is_help = has("h") || has("help");
  if (!is_help && !has("v") && !has("version")) return;
  if (ranks::answers_for_all()) {
    if (is_help)
      printHelp(argv[0]);
    else
      std::cout << VERSION << std::endl;
  }
  std::exit(0);
}

void join_others(int argc, char* argv[]) {
  if (chCommandLineGetBool("independent", argc, argv))
    ranks::require_own_folder();
  else
    ranks::join(argc, argv);
}
