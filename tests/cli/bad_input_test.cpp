// What is wrong with the input is said on the error stream: errors end the run with status 255
// before anything is lost, warnings let it go on and leave the log as it is.
#include <gtest/gtest.h>

#include <regex>

#include "cli/configuration.h"
#include "support/process.h"

namespace {

using Words = std::vector<std::string>;

struct BadInput {
  std::string configuration;
  Words arguments;      // behind -i a.cfg
  std::string message;  // the last line on the error stream, or how it begins
  int status = 255;
};

const std::string kWaveless =
    "[global]\nx = 4\ny = 4\nz = 1\nnx = 4\nny = 4\nnz = 1\n[layer]\nz = 1\n[/layer]\n";

// clang-format off
const std::vector<BadInput> kErrors = {
    {"\n\n= ==\n", {}, "a.cfg: line 3: the line has nothing but equals signs"},
    {configuration(), {"-p", "-r"}, "option -r ends the command line without its value"},
    {configuration("", "type = grating\npy = 4\npx = 1.5\nz = 0\n[/layer]\n[layer]\nz = 1\ntype = grating\npy = 4\npx = 1"), {},
     "a.cfg: layer 2 (grating): px = 1 is under two samples of the grid, whose spacing is 1"},
    {configuration("", "type = grating\npx = 4"), {}, "a.cfg: layer 1 (grating): py = 0 is under two samples"},
    {configuration("nz = -1"), {}, "a.cfg: a grid of 8 x 8 x -1 samples has a negative size"},
    {configuration("nx = 2000000000\nny = 2000000000\nnz = 2000000000"), {},
     "a.cfg: a grid of 2000000000 x 2000000000 x 2000000000 samples has 2^31 voxels or more"},
};

const std::vector<BadInput> kWarnings = {
    {configuration("", "type = lense"), {},
     "a.cfg: line 19: unknown value 'lense' of 'type' in [layer]; did you mean 'lens'?", 0},
    // A sixth of a micrometre a slice: half the domain, three slices of six.
    {configuration("", "z = 0.5\nn = 1"), {}, "a.cfg: the layers leave 3 of 6 slices unwritten; they hold index 0", 0},
    {configuration("", "type = asphere"), {}, "a.cfg: the layers leave 6 of 6 slices unwritten; they hold index 0", 0},
    {kWaveless, {}, "a.cfg: there is no [wave]; the field stays zero", 0},
    {configuration("", "n = 1", "lambda = 0"), {}, "a.cfg: the wavelength is 0; give each [wave] a lambda", 0},
    {configuration("nx = 4"), {"-p"}, "a.cfg: nx = 4 and ny = 8 differ", 0},
};
// clang-format on

void expect_message(const BadInput& input, const std::string& prefix, bool is_quiet) {
  const TempDir directory;
  directory.write("a.cfg", input.configuration);
  Words arguments = {is_quiet ? "-q" : "-", "-i", "a.cfg"};
  arguments.insert(arguments.end(), input.arguments.begin(), input.arguments.end());
  const RunResult result = run_zerith(directory, arguments);
  EXPECT_EQ(result.status, input.status) << input.message;
  EXPECT_TRUE(!is_quiet || result.out.empty()) << result.out;
  if (prefix.empty()) {
    EXPECT_EQ(result.err, "");
    return;
  }
  EXPECT_TRUE(result.err.starts_with(prefix + input.message)) << result.err << input.message;
  EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
  EXPECT_EQ(result.out.find("zerith: "), std::string::npos);
  EXPECT_TRUE(input.status == 0 || result.out.find("Applying") == std::string::npos);
}

TEST(BadInput, ErrorsEndTheRunQuietOrNot) {
  for (const BadInput& input : kErrors)
    for (const bool is_quiet : {false, true}) expect_message(input, "zerith: error: ", is_quiet);
}

TEST(BadInput, WarningsLetItGoOnAndQuietSilencesThem) {
  for (const BadInput& input : kWarnings) {
    expect_message(input, "zerith: warning: ", false);
    expect_message(input, "", true);
  }
  // A record may lack its name where no row is written.
  expect_message({configuration(), {"-r"}, "", 0}, "", false);
}

TEST(BadInput, GridWithoutColumnsHasNoTransform) {
  const TempDir directory;
  directory.write("a.cfg", configuration("nx = 0"));
  EXPECT_EQ(run_zerith(directory, {"-i", "a.cfg"}).status, 0);
  const RunResult result = run_zerith(directory, {"-q", "-i", "a.cfg", "-p"});
  EXPECT_EQ(std::tuple(result.status, result.err),
            std::tuple(1, "zerith: Unable to construct FFTW plan\n"));
}

// Said before the propagation as well as behind it.
TEST(BadInput, FilesThatCannotBeWrittenAreSaidBeforehand) {
  for (const std::string name : {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv", "r.csv"}) {
    const TempDir directory;
    directory.write("a.cfg", configuration());
    std::filesystem::create_directory(directory.path(name));
    const std::string text = run_shell(directory, "$ZERITH -i a.cfg -p -r r.csv 2>&1").out;
    const std::regex expected("[^]*" + name +
                              ": will not be written: Is a directory\n[^]*Applying[^]*" + name +
                              ": cannot be opened for writing: Is a directory\n[^]*");
    EXPECT_TRUE(std::regex_match(text, expected)) << text;
  }
}

TEST(BadInput, FullDiskIsSaidFileByFile) {
  for (const std::string name :
       {"N_sys.csv", "F_inp.csv", "E_cpu.csv", "EFlux_cpu_Z.csv", "r.csv"}) {
    const TempDir directory;
    directory.write("a.cfg", configuration());
    std::filesystem::create_symlink("/dev/full", directory.path(name));
    const std::string text =
        "zerith: warning: " + name + ": not fully written: No space left on device\n";
    EXPECT_EQ(run_zerith(directory, {"-i", "a.cfg", "-p", "-r", "r.csv"}).err, text);
  }
}

// 1000 * 1000 * 2000 complex numbers of 16 bytes.
TEST(BadInput, AllocationThatFailsNamesItsBytes) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer itself needs more address space than the limit leaves";
#endif
  const TempDir directory;
  directory.write("a.cfg", configuration("nx = 1000\nny = 1000\nnz = 2000"));
  const RunResult result = run_shell(directory, "ulimit -v 4000000; exec $ZERITH -q -i a.cfg");
  EXPECT_EQ(std::tuple(result.status, result.out),
            std::tuple(255, "Error - Memory allocation N\n"));
  EXPECT_EQ(result.err,
            "zerith: error: no memory for N, 32000000000 bytes; make nx, ny or nz smaller\n");
}

}  // namespace
