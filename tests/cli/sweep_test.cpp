// Sweeps by the real program: one process a point, one row a point.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "cli/configuration.h"
#include "support/process.h"

namespace {

using Words = std::vector<std::string>;

// The scene of the runs with a table of its beam: power is amp^2 times the area, 12 um^2.
std::string scene() {
  return configuration() + "[monitor]\ntype = beam\nfile = beam.csv\n[/monitor]\n";
}

Words lines(const std::string& text) {
  Words lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// The fields of a row that has no quotes.
Words fields(const std::string& row) {
  Words fields(1);
  for (const char c : row)
    if (c == ',')
      fields.emplace_back();
    else
      fields.back() += c;
  return fields;
}

RunResult sweep(const TempDir& directory, Words words) {
  words.insert(words.begin(), {"-i", "a.cfg", "-p", "--fast"});
  return run_zerith(directory, words);
}

TEST(Sweep, GathersTheLastRowOfEachMonitorForEveryCombination) {
  const TempDir directory;
  directory.write("a.cfg", scene());
  const RunResult result = sweep(directory, {"--sweep", "wave.amp=1:3:1", "--sweep",
                                             "layer1.n=1,1.5", "--jobs", "2", "--table", "t.csv"});
  EXPECT_EQ(std::pair(result.status, result.err), std::pair(0, std::string())) << result.out;
  EXPECT_EQ(result.out, "6 of 6 points in t.csv: 6 run, 0 failed, 0 held already\n");
  const Words table = lines(directory.read("t.csv"));
  ASSERT_EQ(table.size(), 7U);
  const Words header = fields(table[0]);
  EXPECT_EQ(Words(header.begin(), header.begin() + 3),
            (Words{"wave.amp", "layer1.n", "beam.slice [1]"}));
  const auto power = static_cast<std::size_t>(
      std::find_if(header.begin(), header.end(),
                   [](const std::string& name) { return name.starts_with("beam.power"); }) -
      header.begin());
  ASSERT_LT(power, header.size());
  std::set<std::pair<std::string, std::string>> points;
  for (std::size_t row = 1; row < table.size(); ++row) {
    const Words values = fields(table[row]);
    ASSERT_EQ(values.size(), header.size());
    points.emplace(values[0], values[1]);
    const double amplitude = std::stod(values[0]);
    EXPECT_EQ(values[2], "5") << "the last of six slices";
    EXPECT_NEAR(std::stod(values[power]) / (12 * amplitude * amplitude), 1, 1e-6) << table[row];
    EXPECT_EQ(values[values.size() - 2], "0");
    // What the point itself left.
    const std::string folder = "t/wave.amp=" + values[0] + ",layer1.n=" + values[1] + "/";
    EXPECT_EQ(lines(directory.read(folder + "beam.csv")).size(), 7U) << folder;
    EXPECT_NE(directory.read(folder + "zerith.log").find("amp =\t"), std::string::npos);
  }
  EXPECT_EQ(points.size(), 6U);
}

TEST(Sweep, FailedPointIsARowAndTheSweepGoesOn) {
  const TempDir directory;
  directory.write("a.cfg", scene());
  const RunResult result = sweep(directory, {"-q", "--sweep", "global.nx=8,-1,16,6"});
  EXPECT_EQ(std::tuple(result.status, result.out), std::tuple(1, std::string()));
  const Words table = lines(directory.read("sweep.csv"));
  ASSERT_EQ(table.size(), 5U);
  EXPECT_NE(table[2].find(",255,"), std::string::npos) << table[2];
  EXPECT_NE(table[2].find("negative size"), std::string::npos) << table[2];
  EXPECT_NE(table[4].find(",0,"), std::string::npos) << table[4];
}

// A failure of an earlier run counts until a later run of the point succeeds.
TEST(Sweep, FailedPointsCountUntilTheyAreRunAgain) {
  const TempDir directory;
  directory.write("a.cfg", scene());
  std::filesystem::create_directories(directory.path("sweep"));
  directory.write("sweep/wave.amp=2", "no folder can be made here");
  const Words words = {"-q", "--sweep", "wave.amp=1,2"};
  const Words again = {"-q", "--sweep", "wave.amp=1,2", "--retry-failed"};
  const std::string retry = "; sweep.csv has the reasons; --retry-failed runs them again\n";
  const RunResult first = sweep(directory, words);
  EXPECT_EQ(std::pair(first.status, first.err),
            std::pair(1, "zerith: error: failed points: 1, 0 of them in an earlier run" + retry));
  std::filesystem::remove(directory.path("sweep/wave.amp=2"));
  const RunResult second = sweep(directory, words);
  EXPECT_EQ(std::pair(second.status, second.err),
            std::pair(1, "zerith: error: failed points: 1, 1 of them in an earlier run" + retry));
  EXPECT_FALSE(directory.has("sweep/wave.amp=2"));
  // A sweep of other values keeps the row.
  EXPECT_EQ(sweep(directory, {"-q", "--sweep", "wave.amp=1", "--retry-failed"}).status, 0);
  EXPECT_EQ(lines(directory.read("sweep.csv")).size(), 3U);
  for (const Words& run : {again, words}) {
    const RunResult last = sweep(directory, run);
    EXPECT_EQ(std::pair(last.status, last.err), std::pair(0, std::string()));
    EXPECT_EQ(lines(directory.read("sweep.csv")).size(), 3U);
  }
  EXPECT_TRUE(directory.has("sweep/wave.amp=2/E_cpu.csv"));
}

TEST(Sweep, RunsOnlyThePointsThatTheTableHasNot) {
  const TempDir directory;
  directory.write("a.cfg", scene());
  EXPECT_EQ(sweep(directory, {"--sweep", "wave.amp=1,2"}).status, 0);
  const std::string two = directory.read("sweep.csv");
  std::filesystem::remove_all(directory.path("sweep"));
  const RunResult result = sweep(directory, {"--sweep", "wave.amp=2,3,1"});
  EXPECT_EQ(result.out, "3 of 3 points in sweep.csv: 1 run, 0 failed, 2 held already\n");
  EXPECT_TRUE(directory.read("sweep.csv").starts_with(two));
  EXPECT_EQ(lines(directory.read("sweep.csv")).size(), 4U);
  EXPECT_TRUE(directory.has("sweep/wave.amp=3/E_cpu.csv"));
  EXPECT_FALSE(directory.has("sweep/wave.amp=2"));
}

// N shares with a table each hold every point once, and the tables put together are one.
TEST(Sweep, SharesAreAllPointsOnce) {
  const TempDir directory;
  directory.write("a.cfg", scene());
  std::set<std::string> rows;
  std::size_t count = 0;
  for (const std::string share : {"1", "2", "3"}) {
    const RunResult result = sweep(directory, {"--sweep", "wave.amp=1:7:1", "--points",
                                               share + "/3", "--table", "part-" + share + ".csv"});
    EXPECT_EQ(result.status, 0) << result.err;
    const Words table = lines(directory.read("part-" + share + ".csv"));
    EXPECT_GE(table.size(), 3U);
    for (std::size_t row = 1; row < table.size(); ++row, ++count)
      rows.insert(fields(table[row]).front());
  }
  EXPECT_EQ(count, 7U);
  EXPECT_EQ(rows, (std::set<std::string>{"1", "2", "3", "4", "5", "6", "7"}));
}

// The line that docs/sweeps.md gives.
TEST(Sweep, SharesRunUnderGnuParallel) {
  const TempDir directory;
  if (run_shell(directory, "parallel --version | grep -q GNU").status != 0)
    GTEST_SKIP() << "GNU parallel is not installed";
  directory.write("run.cfg", scene());
  const RunResult result = run_shell(
      directory,
      "mkdir bin; ln -s \"$ZERITH\" bin/zerith; PATH=$PWD/bin:$PATH; export PATH; "
      "eval \"$(sed -n 's/^    parallel /parallel /p' '" ZERITH_SOURCE_DIR "/docs/sweeps.md')\"");
  EXPECT_EQ(result.status, 0) << result.err;
  std::size_t rows = 0;
  for (const std::string share : {"1", "2", "3", "4"})
    rows += lines(directory.read("part-" + share + ".csv")).size() - 1;
  EXPECT_EQ(rows, 11U) << result.out;
}

TEST(Sweep, MistakesAreSaidBeforeAnythingIsRun) {
  const TempDir directory;
  directory.write("a.cfg", scene());
  const std::pair<Words, const char*> kMistakes[] = {
      {{"--sweep", "layer1.rr=1"}, "unknown key 'rr' in [layer]; did you mean 'r'?"},
      {{"--sweep", "layer2.r=1"}, "the configuration has 1 [layer]"},
      {{"--sweep", "wave0.amp=1"}, "the configuration has 1 [wave], numbered from 1"},
      {{"--sweep", "layer99999999999999999999.r=1"}, "1 [layer], numbered from 1"},
      {{"--sweep", "layer1.r=1,2", "--set", "layer0.r=1"}, "1 [layer], numbered from 1"},
      {{"--sweep", "global1.nx=1"}, "[global] has no number"},
      {{"--sweep", "wavee.amp=1"}, "unknown section 'wavee'; did you mean 'wave'?"},
      {{"--sweep", "amp=1"}, "unknown section 'amp'"},
      {{"--sweep", "wave.amp=1:2:-1"}, "no step of -1 leads from 1 to 2"},
      {{"--sweep", "wave.amp=1", "--set", "wave.amq=1"}, "unknown key 'amq'"},
      {{"--sweep", "wave.amp=1", "--table", "none/t.csv"}, "none/t.csv: cannot be written"},
  };
  for (const auto& [words, message] : kMistakes) {
    const RunResult result = sweep(directory, words);
    EXPECT_EQ(std::pair(result.status, result.out), std::pair(255, std::string())) << message;
    EXPECT_TRUE(result.err.starts_with("zerith: error: ") &&
                result.err.find(message) != std::string::npos)
        << result.err << message;
    EXPECT_FALSE(directory.has("sweep.csv") || directory.has("sweep"));
  }
}

// Points that would take minutes are ended; the table is whole, and what has ended stands in it.
TEST(Sweep, SignalEndsThePointsAndLeavesTheTableWhole) {
  const TempDir directory;
  directory.write("a.cfg", configuration("nx = 128\nny = 128", "n = 1",
                                         "shape = gaussian\nsigmax = 1\nsigmay = 1"));
  const RunResult result =
      run_shell(directory,
                "$ZERITH -i a.cfg -p --sweep global.nz=2,600,601 --jobs 2 >out & sweep=$!; "
                "until grep -qs '^2,' sweep.csv && [ -e sweep/global.nz=601/E_inp.csv ]; do sleep "
                "0.05; done; "
                "points=$(pgrep -P $sweep); kill -TERM $sweep; wait $sweep; echo $?; "
                "for p in $points; do kill -0 $p 2>/dev/null && echo runs || echo ended; done");
  EXPECT_EQ(result.out, "143\nended\nended\n");
  EXPECT_EQ(directory.read("out"), "1 of 3 points in sweep.csv: 1 run, 0 failed, 0 held already\n");
  EXPECT_EQ(directory.read("sweep.csv"), "global.nz,status,message\n2,0,\n");
}

}  // namespace
