// What a run leaves behind, worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "cli/configuration.h"
#include "support/process.h"

namespace {

std::string times(int count, const std::string& text) {
  std::string repeated;
  for (int i = 0; i < count; ++i) repeated += text;
  return repeated;
}

std::string row(const std::string& value) {
  return times(8, value + ",") + "\n";
}

// Eight such rows and the empty line behind a plane.
std::string sheet(const std::string& value) {
  return times(8, row(value)) + "\n";
}

// N_sys, E_inp, F_inp, E_cpu and EFlux_cpu, in this order.
void expect_files(const std::string& options, const std::vector<std::string>& expected) {
  const TempDir directory;
  directory.write("a.cfg", configuration());
  directory.write("wisdom3.txt", "garbage\n");
  SCOPED_TRACE(options);
  EXPECT_EQ(run_shell(directory, "$ZERITH -q -i a.cfg -p " + options).status, 0);
  std::vector<std::string> texts;
  for (const char* name : {"N_sys.csv", "E_inp.csv", "F_inp.csv", "E_cpu.csv", "EFlux_cpu.csv"})
    texts.push_back(directory.read(name));
  EXPECT_EQ(texts, expected);
  EXPECT_EQ(directory.read("EFlux_cpu_Z.csv"), "\n1,1,1,1,1,1\n");
  EXPECT_TRUE(directory.read("wisdom3.txt").starts_with("(fftw-"));
}

TEST(Files, HoldTheChosenCrossSections) {
  const std::string flux = "6.28319e+06";  // k0 = 6.2831853/um
  const std::string zero = sheet("0");
  std::string cosines, sheets;
  for (const char* value : {"1", "0.5", "-0.5", "-1", "-0.5", "0.5"}) {
    cosines += row(value);
    sheets += sheet(value);
  }
  const std::string rest = times(5, row("0")) + "\n";  // of slices that hold nothing yet
  const std::vector<std::string> along = {times(6, row("1")) + "\n", row("1") + rest,
                                          row(flux) + rest, cosines + "\n",
                                          times(6, row(flux)) + "\n"};
  expect_files("", {sheet("1"), sheet("1"), sheet(flux), sheet("1"), sheet(flux)});
  expect_files("-x 7 -l 3", {sheet("1"), zero, zero, sheet("-1"), sheet(flux)});
  expect_files("-x 1", along);
  expect_files("--cross-section 2 -x 0 --l 7", along);  // the long form wins
  expect_files("-l -1", {times(6, sheet("1")), sheet("1") + times(5, zero),
                         sheet(flux) + times(5, zero), sheets, times(6, sheet(flux))});
  // Out of range reads 0; planes across z then have no separators.
  expect_files("-l 6", std::vector(5, times(8, "00000000\n") + "\n"));
  expect_files("-x 1 -l 99", std::vector(5, row("0") + rest));
}

// Half a wavelength of path difference between columns: the sign alternates along x alone.
TEST(Files, TellRowsFromColumns) {
  const TempDir directory;
  directory.write("a.cfg", configuration("x = 8", "n = 1", "shape = plane\ntheta = 30"));
  for (const std::string x : {"0", "1", "2"}) {
    EXPECT_EQ(run_zerith(directory, {"-q", "-i", "a.cfg", "-x", x}).status, 0);
    const char* line = x == "2" ? "1,1,1,1,1,1,1,1,\n" : "1,-1,1,-1,1,-1,1,-1,\n";
    EXPECT_TRUE(directory.read("E_inp.csv").starts_with(line)) << x;
  }
  for (const char* name : {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv", "wisdom3.txt"})
    EXPECT_FALSE(directory.has(name)) << name;  // prepared, not propagated
}

TEST(Files, FluxProfileIsRelativeToTheFirstSlice) {
  // No slices: no flux, an empty line and another. A dark first slice: 0/0, of either sign.
  const std::vector<std::string> kCases[] = {
      {"nz = 0", "", "\n\n", "ms\n\n"},
      {"nz = 1", "", "\n1\n", "ms\n\n\t[CPU] flux0: ... \t 4.02124e+08\n"},
      {"nz = 2", "\namp = 0", "\nnan,nan\n", "ms\n\n\t[CPU] flux0: ... \t 0\n"}};
  for (const auto& c : kCases) {
    const TempDir directory;
    directory.write("a.cfg", configuration(c[0], "n = 1", "shape = plane" + c[1]));
    const RunResult result = run_zerith(directory, {"-i", "a.cfg", "-p"});
    std::string profile = directory.read("EFlux_cpu_Z.csv");
    std::erase(profile, '-');
    EXPECT_EQ(std::tuple(result.status, profile), std::tuple(0, c[2]));
    EXPECT_TRUE(result.out.ends_with(c[3])) << result.out;
  }
}

// A configuration is refused as an output only if the run writes that output.
TEST(Files, AConfigurationMayHaveTheNameOfAFileThatIsNotWritten) {
  const TempDir directory;
  const std::string monitor =
      configuration() + "[monitor]\ntype = beam\nfile = beam.csv\n[/monitor]\n";
  for (const auto& [name, options, status] : {std::tuple("wisdom3.txt", "", 0),
                                              {"wisdom3.txt", "-p", 255},
                                              {"beam.csv", "", 0},
                                              {"beam.csv", "-p", 255},
                                              {"E_cpu.csv", "", 0},
                                              {"E_cpu.csv", "-p", 255},
                                              {"N_sys.csv", "", 255}}) {
    directory.write(name, monitor);
    const RunResult run =
        run_shell(directory, "$ZERITH -q -i " + std::string(name) + " " + options);
    EXPECT_EQ(run.status, status) << name << options << run.err;
    EXPECT_EQ(directory.read(name), monitor) << options;
  }
}

// Scripts keep a lock while they run the program. It waits a moment for other writers alone.
TEST(Files, RunRecordIsWrittenWhileAnotherProcessHasItLocked) {
  const TempDir directory;
  directory.write("a.cfg", configuration("nz = 2"));
  for (const std::string locked : {".", "r.csv"}) {
    const RunResult run =
        run_shell(directory,
                  "exec 9<" + locked + "; flock 9; timeout 5 $ZERITH -q -i a.cfg -p -r r.csv 9<&-");
    EXPECT_EQ(run.status, 0) << locked << run.err;
  }
  const std::string record = directory.read("r.csv");
  EXPECT_EQ(std::count(record.begin(), record.end(), '\n'), 3) << record;
}

TEST(Files, RunRecordGrowsByARowPerRun) {
  const TempDir directory;
  directory.write("a.cfg", configuration("nz = 2"));
  EXPECT_EQ(run_shell(directory, "$ZERITH -q -i a.cfg -r r.csv").status, 0);
  EXPECT_FALSE(directory.has("r.csv"));  // nothing was run
  // The kernel's options belong to the device alone.
  for (const std::string options : {"-r r.csv", "--store-results r.csv -r x -k 1 -b 32"})
    EXPECT_EQ(run_shell(directory, "$ZERITH -q --run-cpu -i ./a.cfg " + options).status, 0);
  const std::regex expected(
      "cfile;kernel_id;block_size;nz;ny;nx;kernel_time;cpu_time;err-max;speed-up\n"
      "(\\./a\\.cfg;0;16;2;8;8;[0-9.e-]+;-1;-1;-[0-9.e+]+\n){2}");
  EXPECT_TRUE(std::regex_match(directory.read("r.csv"), expected)) << directory.read("r.csv");
}

}  // namespace
