// What is wrong with the input is said on the error stream: errors end the run with status 255
// before anything is lost, warnings let it go on and leave the log as it is.
#include <gtest/gtest.h>

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
    {"[global]\n" + std::string(79, ' ') + "#\n", {},
     "a.cfg: line 2: the line has 80 characters, blanks included, and the limit is 79"},
    {"\n\n= ==\n", {}, "a.cfg: line 3: the line has nothing but equals signs"},
    {configuration(), {"-x"}, "option -x ends the command line without its value"},
    {configuration(), {"-l", "1", "--layer"}, "option --layer ends the command line without its value"},
    {configuration(), {"--config-file"}, "option --config-file ends the command line without its value"},
    {configuration(), {"-p", "-r"}, "option -r ends the command line without its value"},
    {configuration("", "type = grating\npy = 4\npx = 1.5\nz = 0\n[/layer]\n[layer]\nz = 1\ntype = grating\npy = 4\npx = 1"), {},
     "a.cfg: layer 2 (grating): px = 1 is under two samples of the grid, whose spacing is 1"},
    {configuration("", "type = grating\npx = 4"), {}, "a.cfg: layer 1 (grating): py = 0 is under two samples"},
    {configuration("nx = -8"), {}, "a.cfg: a grid of -8 x 8 x 6 samples has a negative size"},
    {configuration("nz = -1"), {}, "a.cfg: a grid of 8 x 8 x -1 samples has a negative size"},
    {configuration("nx = 65536\nny = 32768\nnz = 1"), {},
     "a.cfg: a grid of 65536 x 32768 x 1 samples has 2^31 voxels or more"},
    {configuration("nx = 2000000000\nny = 2000000000\nnz = 2000000000"), {},
     "a.cfg: a grid of 2000000000 x 2000000000 x 2000000000 samples has 2^31 voxels or more"},
    {configuration("method = rcwa"), {}, "a.cfg: only the wave propagation method is supported"},
};

const std::vector<BadInput> kWarnings = {
    {configuration("nx = 8\nlamda = 3"), {}, "a.cfg: line 11: unknown key 'lamda' in [global]", 0},
    {configuration("", "type = lense"), {},
     "a.cfg: line 19: unknown value 'lense' of 'type' in [layer]; did you mean 'lens'?", 0},
    {configuration("[/global]\n[wayv]\n[global]"), {}, "a.cfg: line 11: unknown tag '[wayv]' is ignored", 0},
    {configuration() + "nx = 3\n", {}, "a.cfg: line 21: key 'nx' stands in no section and is ignored", 0},
    {configuration("nx ="), {}, "a.cfg: line 10: key 'nx' has no value and is ignored", 0},
    {configuration() + "[layer]\nz = 1\n", {}, "a.cfg: the last [layer] has no closing tag and is ignored", 0},
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
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "zerith: Unable to construct FFTW plan\n");
}

// Takes the line out of the text and says where it stood.
std::size_t take(std::string& text, const std::string& line) {
  const std::size_t place = text.find(line);
  EXPECT_NE(place, std::string::npos) << line << text;
  if (place != std::string::npos) text.erase(place, line.size());
  return place;
}

// Said before the propagation as well as behind it, and the log stays as it is.
TEST(BadInput, FilesThatCannotBeWrittenAreSaidBeforehand) {
  const std::string run = "$ZERITH -i a.cfg -p -r r.csv 2>&1";
  const TempDir good;
  good.write("a.cfg", configuration());
  const std::string log = without_times(run_shell(good, run).out);
  for (const std::string name : {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv", "r.csv"}) {
    const TempDir directory;
    directory.write("a.cfg", configuration());
    std::filesystem::create_directory(directory.path(name));
    const RunResult result = run_shell(directory, run);
    EXPECT_EQ(result.status, 0);
    std::string text = without_times(result.out);
    const std::string begin = "zerith: warning: " + name;
    EXPECT_LT(take(text, begin + ": will not be written: Is a directory\n"), text.find("Applying"));
    EXPECT_GT(take(text, begin + ": cannot be opened for writing: Is a directory\n"),
              text.find("Applying"));
    EXPECT_EQ(text, log);
  }
}

TEST(BadInput, FullDiskIsSaidFileByFile) {
  for (const std::string name :
       {"N_sys.csv", "F_inp.csv", "E_cpu.csv", "EFlux_cpu_Z.csv", "r.csv"}) {
    const TempDir directory;
    directory.write("a.cfg", configuration());
    std::filesystem::create_symlink("/dev/full", directory.path(name));
    const RunResult result = run_zerith(directory, {"-i", "a.cfg", "-p", "-r", "r.csv"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err,
              "zerith: warning: " + name + ": not fully written: No space left on device\n");
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
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(result.out, "Error - Memory allocation N\n");
  EXPECT_EQ(result.err,
            "zerith: error: no memory for N, 32000000000 bytes; make nx, ny or nz smaller\n");
}

}  // namespace
