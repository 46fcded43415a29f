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
    {configuration("", "type = grating\npy = 4\npx = 0.75\nz = 0\n[/layer]\n[layer]\nz = 1\ntype = grating\npy = 4\npx = 0.5"), {},
     "a.cfg: layer 2 (grating): px = 0.5 is under two samples of the grid, whose spacing is 0.5"},
    {configuration("", "type = grating\npx = 4"), {}, "a.cfg: layer 1 (grating): py = 0 is under two samples"},
    {configuration("", "[/layer]\n[layer]\ntype = grating\nover = 1\npx = 4\npy = 0.3"), {}, "a.cfg: layer 2 (grating): py = 0.3 is under two samples of the grid, whose spacing is 0.375"},
    {configuration("nz = -1"), {}, "a.cfg: a grid of 8 x 8 x -1 samples has a negative size"},
    {configuration("nx = 1024\nny = 1024\nnz = 2048"), {},
     "a.cfg: a grid of 1024 x 1024 x 2048 samples has 2^31 voxels or more"},
};

const std::vector<BadInput> kWarnings = {
    {configuration("", "type = lense\nn = 1"), {},
     "a.cfg: line 19: unknown value 'lense' of 'type' in [layer]; did you mean 'lens'?", 0},
    // A sixth of a micrometre a slice: half the domain, three slices of six.
    {configuration("", "z = 0.5\nn = 1"), {}, "a.cfg: the layers leave 3 of 6 slices unwritten; they hold index 0", 0},
    {configuration("", "type = asphere"), {}, "a.cfg: the layers leave 6 of 6 slices unwritten; they hold index 0", 0},
    // Keys that the kind does not use take any value, as in files from before there were such keys.
    {configuration("", "type = lens\nn = 1\nne = 1\nr = 9\ndx = 1"), {}, "a.cfg: line 17: [layer]: type = lens does not use dx\n", 0},
    {configuration("", "n = 1\nlevels = 0\ng = -1\nduty = 2\nt = 3\ndx = 0\ndy = x\ndz = -2\ntiltx = 99\ninterpolate = 7"), {},
     "a.cfg: line 17: [layer]: type = homog does not use levels, g, duty, t, dx, dy, dz, tiltx, interpolate\n", 0},
    {configuration("", "n = 1\ntype = asphere\nlevels = 0"), {}, "a.cfg: line 17: [layer]: type = asphere does not use n, levels", 0},
    {configuration("", "n = 1", "waist = 0\nshape = plane"), {}, "a.cfg: line 15: [wave]: shape = plane does not use waist\n", 0},
    {configuration("", "n = 1", "shape = plane\ndx = -1"), {}, "a.cfg: line 16: [wave]: shape = plane does not use dx\n", 0},
    {configuration() + "[/monitor]\n", {}, "a.cfg: line 21: [/monitor] closes nothing and is ignored\n", 0},
    {kWaveless, {}, "a.cfg: there is no [wave]; the field stays zero", 0},
    {configuration("", "n = 1", "lambda = 0"), {}, "a.cfg: line 12: [wave]: lambda is 0: the field is not finite", 0},
    {configuration("nx = 4"), {"-p"}, "a.cfg: nx = 4 and ny = 8 differ", 0},
};
// clang-format on

void expect_message(const BadInput& input, const std::string& prefix, bool is_quiet) {
  const TempDir directory;
  directory.write("a.cfg", input.configuration);
  Words arguments = {"-i", "a.cfg"};
  if (is_quiet) arguments.insert(arguments.begin(), "-q");
  arguments.insert(arguments.end(), input.arguments.begin(), input.arguments.end());
  const RunResult result = run_zerith(directory, arguments);
  EXPECT_EQ(result.status, input.status) << input.message;
  // A volume that is not to be had is said in any mode.
  const std::string said = input.message.find(" samples has ") != std::string::npos
                               ? "Error - Memory allocation N\n"
                               : "";
  EXPECT_TRUE(is_quiet ? result.out == said : result.out.ends_with(said)) << result.out;
  if (prefix.empty()) {
    EXPECT_EQ(result.err, "");
    return;
  }
  ASSERT_TRUE(result.err.ends_with('\n')) << input.message;
  // An error is the last word; what else is to be said of a scene may stand beside a warning.
  const std::size_t last = result.err.rfind('\n', result.err.size() - 2) + 1;
  const std::size_t found = result.err.find(prefix + input.message);
  EXPECT_TRUE(input.status == 0 ? found != std::string::npos : found == last)
      << result.err << input.message;
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
}

// A record that lacks its name is warned of; the run goes on up to the moment when its row is due.
TEST(BadInput, RecordWithoutANameLosesNothingElse) {
  const TempDir directory;
  directory.write("a.cfg", configuration());
  EXPECT_EQ(run_zerith(directory, {"-q", "-i", "a.cfg", "-r"}).status, 0);
  const RunResult run = run_zerith(directory, {"-i", "a.cfg", "-p", "--store-results"});
  EXPECT_EQ(run.status, 255);
  EXPECT_EQ(run.err.find("zerith: warning: option --store-results ends the command line"), 0U);
  EXPECT_NE(run.err.find("zerith: error: option --store-results ends"), std::string::npos);
  EXPECT_TRUE(run.out.ends_with("flux0: ... \t 4.02124e+08\n")) << run.out;
  EXPECT_EQ(csv_rows(directory.read("EFlux_cpu_Z.csv")).size(), 2U);
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
    const std::regex expected(
        "[^]*" + name + ": will not be written: Is a directory\n[^]*Applying[^]*" + name +
        ": (lost|a row is lost), it cannot be (opened for writing|written): Is a "
        "directory[^]*");
    EXPECT_TRUE(std::regex_match(text, expected)) << text;
  }
}

TEST(BadInput, FullDiskIsSaidFileByFile) {
  for (const std::string name :
       {"N_sys.csv", "F_inp.csv", "E_cpu.csv", "EFlux_cpu_Z.csv", "r.csv"}) {
    const TempDir directory;
    directory.write("a.cfg", configuration());
    std::filesystem::create_symlink("/dev/full", directory.path(name));
    const std::regex error("zerith: error: " + name +
                           ": .*lost, it .*written: No space left on device.*\n");
    for (const char* quiet : {"-q", "-p"}) {
      const RunResult run = run_zerith(directory, {"-i", "a.cfg", quiet, "-p", "-r", "r.csv"});
      EXPECT_TRUE(std::regex_match(run.err, error)) << run.err;
      EXPECT_EQ(run.status, 0);
    }
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
            "zerith: error: no memory for N, 32000000000 bytes; make nx, ny or nz smaller, or hold "
            "slices instead of volumes with --stream or --fast\n");
}

// A launcher that starts it several times is one for a build with MPI; that build asks MPI itself.
TEST(Launchers, RunsThatWouldBeDoneSeveralTimesAreRefused) {
  const TempDir folder;
  folder.write("a.cfg", configuration());
  const std::vector<std::string> run = {"-q", "-i", "a.cfg"};
  const std::vector<std::string> sweep = {"-q", "-i", "a.cfg", "--sweep", "wave1.amp=1,2"};
  for (const auto& [name, rank] :
       {std::pair("OMPI_COMM_WORLD_SIZE", "OMPI_COMM_WORLD_RANK"),
        std::pair("PMI_SIZE", "PMI_RANK"), std::pair("MV2_COMM_WORLD_SIZE", "MV2_COMM_WORLD_RANK"),
        std::pair("SLURM_STEP_NUM_TASKS", "SLURM_PROCID")}) {
    for (const auto& arguments : {run, sweep}) {
      if (!ZERITH_IS_ALONE && arguments == run) continue;
      const RunResult refused = run_zerith(folder, arguments, {{name, "3"}, {rank, "0"}});
      EXPECT_EQ(refused.status, 255) << name;
      EXPECT_NE(refused.err.find("one of 3 processes"), std::string::npos) << refused.err;
      EXPECT_FALSE(folder.has("N_sys.csv"));
      const RunResult other = run_zerith(folder, arguments, {{name, "3"}, {rank, "2"}});
      EXPECT_EQ(std::tuple(other.status, other.err), std::tuple(255, refused.err));
    }
    for (const char* answered : {"--version", "--help"}) {
      const RunResult answer = run_zerith(folder, {answered}, {{name, "2"}, {rank, "0"}});
      EXPECT_EQ(std::tuple(answer.status, answer.err), std::tuple(0, ""));
      EXPECT_EQ(answer.out, run_zerith(folder, {answered}).out);
    }
    // A farm: each process in a folder of its own.
    const RunResult farmed =
        run_zerith(folder, {"-q", "-i", "a.cfg", "--independent"}, {{name, "3"}, {rank, "2"}});
    EXPECT_EQ(std::tuple(farmed.status, farmed.err), std::tuple(0, ""));
    EXPECT_TRUE(folder.has("N_sys.csv"));
    std::filesystem::remove(folder.path("N_sys.csv"));
    const RunResult shared =
        run_shell(folder, std::string("export ") + name + "=3 " + rank +
                              "=1; exec 9<.; flock 9; $ZERITH -q -i a.cfg --independent");
    EXPECT_EQ(shared.status, 255);
    EXPECT_NE(shared.err.find("a folder of its own"), std::string::npos) << shared.err;
    EXPECT_FALSE(folder.has("N_sys.csv"));
    if (ZERITH_IS_ALONE) {
      EXPECT_EQ(run_zerith(folder, run, {{name, "1"}}).status, 0);
      std::filesystem::remove(folder.path("N_sys.csv"));
    }
  }
}

}  // namespace
