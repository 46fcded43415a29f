// --fast and --threads on the real program.
#include <gtest/gtest.h>

#include "cli/configuration.h"
#include "support/process.h"

namespace {

constexpr const char* kFiles[] = {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv"};

// A beam through a lens and a guide: four materials, and pairs that come and go.
std::string composed() {
  return configuration("nx = 20\nny = 20\nx = 6\ny = 6\nnz = 12\nz = 4",
                       "n = 1\n[/layer]\n[layer]\ntype=lens\nz=1\nr=-4\nn=1.5\nne=1\n[/layer]\n"
                       "[layer]\ntype=waveguide\nz=2\nr=1\nn=1.5\nne=1.45\nke=0.001",
                       "shape = gaussian\nsigmax=1\nsigmay=1.5\namp=100");
}

std::string run_log(const TempDir& directory, std::vector<std::string> options) {
  options.insert(options.begin(), {"-i", "a.cfg", "-p", "-l", "-1"});
  const RunResult run = run_zerith(directory, options);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  return without_times(run.out);
}

TEST(Fast, KeepsTheLogAndTheNumbersOfTheFiles) {
  const TempDir reference;
  const TempDir fast;
  reference.write("a.cfg", composed());
  fast.write("a.cfg", composed());
  const std::string log = run_log(reference, {});
  EXPECT_EQ(run_log(fast, {"--fast", "--threads", "2"}), log);
  for (const char* name : kFiles)
    EXPECT_EQ(differing_values(reference.read(name), fast.read(name)), 0U) << name;

  // The same on the device.
  run_log(reference, {"-g"});
  run_log(fast, {"-g", "--fast", "--threads", "0"});
  for (const char* name : {"E_gpu.csv", "EFlux_gpu.csv", "EFlux_gpu_Z.csv"})
    EXPECT_EQ(differing_values(reference.read(name), fast.read(name)), 0U) << name;
}

// Beside a beam that is much narrower than the domain it is dark but for round-off, and that of
// transforms is another than that of the direct sum.
TEST(Fast, TakesTransformsOnBothRoads) {
  const TempDir directory;
  directory.write("a.cfg", configuration("nx = 48\nny = 48\nx = 24\ny = 20\nnz = 3", "n = 1",
                                         "shape = gaussian\namp = 1e10\nsigmax = 1\nsigmay = 1.2"));
  std::string fields[2][2];
  for (const bool is_fast : {false, true}) {
    run_log(directory, {"-g", is_fast ? "--fast" : "-p"});
    fields[is_fast][0] = directory.read("E_cpu.csv");
    fields[is_fast][1] = directory.read("E_gpu.csv");
  }
  for (const int road : {0, 1}) {
    EXPECT_NE(fields[false][road], fields[true][road]);
    EXPECT_EQ(differing_values(fields[false][road], fields[true][road]), 0U);
  }
}

TEST(Fast, ThreadsChangeNoByteOfTheReference) {
  const TempDir one;
  const TempDir many;
  one.write("a.cfg", composed());
  many.write("a.cfg", composed());
  run_log(one, {});
  run_log(many, {"--threads", "3"});
  for (const char* name : kFiles) EXPECT_EQ(one.read(name), many.read(name)) << name;
}

// The first interpolated step is compared with the exact sum, whatever the steps before it.
TEST(Fast, ToleranceSaysWhatTheStepsWereOffBy) {
  const TempDir directory;
  directory.write(
      "a.cfg",
      configuration("nx = 48\nny = 48\nx = 24\ny = 20\nnz = 12\nz = 6\ntrim = 0",
                    "n = 1.5\ntype = grin\ng = 0.02\nz = 6\nr = 9\nne = 1.47\nlevels = 500",
                    "shape = gaussian\namp = 100\nsigmax = 3\nsigmay = 4"));
  const auto said = [&](std::vector<std::string> options) {
    options.insert(options.begin(), {"-i", "a.cfg", "-p", "--fast", "--progress", "plain"});
    const RunResult run = run_zerith(directory, options);
    EXPECT_EQ(run.status, 0) << run.err;
    return run.err;
  };
  EXPECT_EQ(said({}).find("off by"), std::string::npos);
  const std::string text = said({"--tolerance", "1e-6"});
  EXPECT_NE(text.find("by the direct sum, 1 with pairs interpolated"), std::string::npos) << text;
  const std::size_t found = text.find("off by at most ");
  ASSERT_NE(found, std::string::npos) << text;
  const double error = std::stod(text.substr(found + 15));
  EXPECT_GT(error, 1e-10);
  EXPECT_LT(error, 1e-6);
  EXPECT_EQ(text.find("zerith: interpolated"),
            found - std::string("zerith: interpolated steps were ").size());
}

TEST(Fast, ThreadsWantANumberThatIsNotNegative) {
  const TempDir directory;
  directory.write("a.cfg", configuration());
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{"-i", "a.cfg", "-q", "--threads", "-2"},
        std::vector<std::string>{"-i", "a.cfg", "-q", "--threads"}}) {
    const RunResult run = run_zerith(directory, options);
    EXPECT_EQ(run.status, 255);
    EXPECT_EQ(run.err.rfind("zerith: error: ", 0), 0U) << run.err;
    EXPECT_NE(run.err.find("--threads"), std::string::npos);
  }
}

}  // namespace
