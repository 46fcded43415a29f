// What a run leaves behind, worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

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

struct Files {
  std::string N, E_inp, F_inp, E_cpu, F_cpu;
};

void expect_files(const std::vector<std::string>& arguments, const Files& expected) {
  const TempDir directory;
  directory.write("a.cfg", configuration());
  directory.write("wisdom3.txt", "garbage\n");
  std::vector<std::string> all = {"-q", "-i", "a.cfg", "-p"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  SCOPED_TRACE(testing::PrintToString(arguments));
  EXPECT_EQ(run_zerith(directory, all).status, 0);
  EXPECT_EQ(directory.read("N_sys.csv"), expected.N);
  EXPECT_EQ(directory.read("E_inp.csv"), expected.E_inp);
  EXPECT_EQ(directory.read("F_inp.csv"), expected.F_inp);
  EXPECT_EQ(directory.read("E_cpu.csv"), expected.E_cpu);
  EXPECT_EQ(directory.read("EFlux_cpu.csv"), expected.F_cpu);
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
  const Files along = {times(6, row("1")) + "\n", row("1") + rest, row(flux) + rest, cosines + "\n",
                       times(6, row(flux)) + "\n"};
  expect_files({}, {sheet("1"), sheet("1"), sheet(flux), sheet("1"), sheet(flux)});
  expect_files({"-x", "7", "-l", "3"}, {sheet("1"), zero, zero, sheet("-1"), sheet(flux)});
  expect_files({"-x", "1"}, along);
  expect_files({"--cross-section", "2", "-x", "0", "--l", "7"}, along);  // the long form wins
  expect_files({"-l", "-1"}, {times(6, sheet("1")), sheet("1") + times(5, zero),
                              sheet(flux) + times(5, zero), sheets, times(6, sheet(flux))});
  // Out of range reads 0; planes across z then have no separators.
  const std::string bare = times(8, "00000000\n") + "\n";
  expect_files({"-l", "6"}, {bare, bare, bare, bare, bare});
  const std::string none = row("0") + rest;
  expect_files({"-x", "1", "-l", "99"}, {none, none, none, none, none});
}

// Half a wavelength of path difference between columns: the sign alternates along x alone.
TEST(Files, TellRowsFromColumns) {
  const TempDir directory;
  directory.write("a.cfg", configuration("", "n = 1", "shape = plane\ntheta = 30"));
  for (const auto& [x, line] : {std::pair("0", "1,-1,1,-1,1,-1,1,-1,\n"),
                                {"1", "1,-1,1,-1,1,-1,1,-1,\n"},
                                {"2", "1,1,1,1,1,1,1,1,\n"}}) {
    EXPECT_EQ(run_zerith(directory, {"-q", "-i", "a.cfg", "-x", x}).status, 0);
    EXPECT_TRUE(directory.read("E_inp.csv").starts_with(line)) << x;
  }
  for (const char* name : {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv", "wisdom3.txt"})
    EXPECT_FALSE(directory.has(name)) << name;  // prepared, not propagated
}

TEST(Files, FluxProfileIsRelativeToTheFirstSlice) {
  struct Case {
    const char *grid, *wave, *profile, *end_of_log;
  };
  // No slices: no flux, an empty line and another. A dark first slice: 0/0, of either sign.
  for (const Case& c :
       {Case{"nz = 0", "", "\n\n", "ms\n\n"},
        {"nz = 1", "", "\n1\n", "ms\n\n\t[CPU] flux0: ... \t 4.02124e+08\n"},
        {"nz = 2", "\namp = 0", "\nnan,nan\n", "ms\n\n\t[CPU] flux0: ... \t 0\n"}}) {
    const TempDir directory;
    directory.write("a.cfg", configuration(c.grid, "n = 1", std::string("shape = plane") + c.wave));
    const RunResult result = run_zerith(directory, {"-i", "a.cfg", "-p"});
    EXPECT_EQ(result.status, 0);
    std::string profile = directory.read("EFlux_cpu_Z.csv");
    std::erase(profile, '-');
    EXPECT_EQ(profile, c.profile);
    EXPECT_TRUE(result.out.ends_with(c.end_of_log)) << result.out;
  }
}

TEST(Files, RunRecordGrowsByARowPerRun) {
  const TempDir directory;
  directory.write("a.cfg", configuration("nz = 2"));
  EXPECT_EQ(run_shell(directory, "$ZERITH -q -i a.cfg -r r.csv").status, 0);
  EXPECT_FALSE(directory.has("r.csv"));  // nothing was run
  // The kernel's options belong to the device alone.
  for (const std::string options : {"-r r.csv", "--store-results r.csv -r x -k 1 -b 32"})
    EXPECT_EQ(run_shell(directory, "$ZERITH -q --run-cpu -i ./a.cfg " + options).status, 0);
  std::istringstream record(directory.read("r.csv"));
  std::string line;
  std::getline(record, line);
  EXPECT_EQ(line, "cfile;kernel_id;block_size;nz;ny;nx;kernel_time;cpu_time;err-max;speed-up");
  for (int i = 0; i < 2; ++i) {
    std::getline(record, line);
    double time = 0, speed_up = 0;
    ASSERT_EQ(std::sscanf(line.c_str(), "./a.cfg;0;16;2;8;8;%lf;-1;-1;%lf", &time, &speed_up), 2)
        << line;
    EXPECT_GT(time, 0.0);
    EXPECT_NEAR(speed_up * time, -1.0, 2e-5);  // six digits each
  }
  EXPECT_FALSE(std::getline(record, line));
}

}  // namespace
