// What a sweep reads from the command line, and the table that it writes.
#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "main/sweep_plan.h"
#include "main/sweep_point.h"
#include "main/sweep_table.h"
#include "support/errors.h"
#include "support/process.h"

namespace {

using Words = std::vector<std::string>;

sweep::Plan plan_of(Words words) {
  words.insert(words.begin(), "zerith");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  return sweep::read_plan(static_cast<int>(argv.size()), argv.data());
}

TEST(SweepPlan, RangesMeetBothEndsAndListsKeepTheirTexts) {
  const std::pair<const char*, Words> kValues[] = {
      {"100:130:10", {"100", "110", "120", "130"}},
      {"0.1:0.3:0.1", {"0.1", "0.2", "0.3"}},  // 0.1 + 2 * 0.1 is not 0.3; 0.2/0.1 may not be 2
      {"0:1:0.3", {"0", "0.3", "0.6", "0.9"}},
      {"1:-1:-1", {"1", "0", "-1"}},
      {"-0.2:0:0.2", {"-0.2", "0"}},
      {"5:5:1", {"5"}},
      {"1e-3,2.50,te", {"1e-3", "2.50", "te"}},
  };
  for (const auto& [text, values] : kValues) {
    const sweep::Axis axis = sweep::read_axis(std::string("layer3.z=") + text);
    EXPECT_EQ(axis.key, "layer3.z");
    EXPECT_EQ(axis.values, values) << text;
  }
}

TEST(SweepPlan, EveryCombinationHasAPlaceAndAName) {
  const sweep::Plan plan =
      plan_of({"--sweep", "a.b=1:2:1", "-p", "--sweep", "w.file=x/y,%", "--sweep", "c.d=7"});
  ASSERT_EQ(sweep::combinations(plan.axes), 4);
  std::set<std::string> names;
  for (int i = 0; i < 4; ++i)
    names.insert(sweep::point_name(plan.axes, sweep::combination(plan.axes, i)));
  EXPECT_EQ(names, (std::set<std::string>{"a.b=1,w.file=x%2Fy,c.d=7", "a.b=1,w.file=%25,c.d=7",
                                          "a.b=2,w.file=x%2Fy,c.d=7", "a.b=2,w.file=%25,c.d=7"}));
  EXPECT_EQ(sweep::combination(plan.axes, 1), (Words{"1", "%", "7"}));
}

TEST(SweepPlan, PointsGetTheOtherOptions) {
  const sweep::Plan plan = plan_of({"-p", "--jobs", "3", "-i", "a.cfg", "--sweep", "a=1", "--set",
                                    "b=2", "--points", "2/5", "--table", "d/t.csv", "-x", "1"});
  const std::string configuration = std::filesystem::absolute("a.cfg").string();
  EXPECT_EQ(plan.command, (Words{"zerith", "-p", "-i", configuration, "--set", "b=2", "-x", "1"}));
  EXPECT_EQ(std::tuple(plan.jobs, plan.share, plan.shares), std::tuple(3, 2, 5));
  EXPECT_EQ(std::pair(plan.table, plan.folder),
            std::pair(std::string("d/t.csv"), std::string("d/t")));
  const sweep::Plan other = plan_of({"--sweep", "a=1", "--table", "t", "-q"});
  EXPECT_EQ(std::tuple(other.folder, other.jobs, other.is_quiet), std::tuple("t.points", 1, true));
  EXPECT_EQ(plan_of({"--sweep", "a=1", "--folder", "f"}).folder, "f");
}

TEST(SweepPlan, MistakesEndTheProcess) {
  const std::pair<Words, const char*> kMistakes[] = {
      {{"--sweep", "a"}, "--sweep a: write SECTION.KEY=FROM:TO:STEP"},
      {{"--sweep", "=1"}, "write SECTION.KEY"},
      {{"--sweep", "a="}, "a value is missing"},
      {{"--sweep", "a=1,2,1"}, "1 stands twice"},
      {{"--sweep", "a=1:2"}, "a range is FROM:TO:STEP"},
      {{"--sweep", "a=1:2:x"}, "a range is FROM:TO:STEP"},
      {{"--sweep", "a=1:nan:1"}, "a range is FROM:TO:STEP"},
      {{"--sweep", "a=1:2:0"}, "no step of 0 leads from 1 to 2"},
      {{"--sweep", "a=1:2:-1"}, "no step of -1 leads from 1 to 2"},
      {{"--sweep", "a=0:1:1e-7"}, "more than 1000000 points"},
      {{"--sweep", "a=1:1001:1", "--sweep", "b=1:1000:1"}, "the sweep has 1001000 points"},
      {{"--sweep", "a=1", "--sweep", "a=2"}, "--sweep names a twice"},
      {{"--sweep", "a=1", "--sweep", "b=2", "--sweep", "c=3", "--sweep", "d=4"}, "three keys"},
      {{"--sweep", "a=" + std::string(300, '1')}, "too long to name"},
      {{"--sweep", "a=1", "--jobs", "0"}, "--jobs 0: write a whole number, 1 or more"},
      {{"--sweep", "a=1", "--jobs", "2x"}, "--jobs 2x: write a whole number"},
      {{"--sweep", "a=1", "--points", "1/2"}, "a table of its own"},
      {{"--sweep", "a=1", "--table", "t", "--points", "3/2"}, "K from 1 to N"},
      {{"--sweep", "a=1", "--table", "t", "--points", "1/2/3"}, "K from 1 to N"},
      {{"--sweep", "a=1", "--table", ""}, "need a name"},
      {{"--sweep", "a=1", "--jobs"}, "option --jobs ends the command line without its value"},
  };
  for (const auto& [words, message] : kMistakes) EXPECT_ERROR(plan_of(words), message);
}

TEST(SweepTable, GrowsByRowsAndColumnsAndIsReadAgain) {
  const TempDir directory;
  const std::string name = directory.path("t.csv").string();
  {
    sweep::Table table(name, {"a", "b"});
    EXPECT_TRUE(table.add({"1", "x"}, {}, 255, "bad, \"so\"\tto speak"));
    EXPECT_TRUE(table.add({"2", "y"}, {{"m.z", "5"}, {"m.p, q", "6"}}, 0, ""));
    EXPECT_TRUE(table.add({"3", "y"}, {{"n.z", "7"}, {"m.z", "8"}}, 0, ""));
    EXPECT_EQ(table.status({"1", "x"}), "255");
    EXPECT_EQ(table.status({"1", "y"}), std::nullopt);
  }
  const std::string text =
      "a,b,m.z,\"m.p, q\",n.z,status,message\n1,x,,,,255,\"bad, \"\"so\"\" to speak\"\n"
      "2,y,5,6,,0,\n3,y,8,,7,0,\n";
  EXPECT_EQ(directory.read("t.csv"), text);

  // A truncated row is dropped, and its point runs again.
  std::ofstream(name, std::ios::app) << "4,y,9,";
  sweep::Table again(name, {"a", "b"});
  EXPECT_EQ(directory.read("t.csv"), text);
  EXPECT_EQ(again.status({"1", "x"}), "255");
  EXPECT_EQ(again.status({"3", "y"}), "0");
  EXPECT_FALSE(again.status({"4", "y"}) || again.status({"a", "b"}));
  EXPECT_TRUE(again.add({"4", "y"}, {{"m.z", "9"}}, 0, ""));
  EXPECT_EQ(directory.read("t.csv"), text + "4,y,9,,,0,\n");
  EXPECT_TRUE(again.forget({{"1", "x"}}));
  EXPECT_FALSE(again.status({"1", "x"}));
  EXPECT_EQ(directory.read("t.csv"),
            text.substr(0, text.find("1,x")) + text.substr(text.find("2,y")) + "4,y,9,,,0,\n");
}

TEST(SweepTable, RefusesWhatIsNotItsOwn) {
  const TempDir directory;
  const std::string name = directory.path("t.csv").string();
  for (const std::string header : {"b,a,status,message\n", "a,b,status\n", "no newline", "\n"}) {
    directory.write("t.csv", header);
    EXPECT_ERROR(sweep::Table(name, {"a", "b"}),
                 "is not a table of this sweep, whose columns begin a,b");
    EXPECT_EQ(directory.read("t.csv"), header);
  }
  EXPECT_ERROR(sweep::Table(directory.path("none/t.csv").string(), {"a"}),
               "cannot be written: No such file");
  const sweep::Table table(directory.path("u.csv").string(), {"a"});
  EXPECT_ERROR(sweep::Table(directory.path("u.csv").string(), {"a"}),
               "another sweep writes this table");
}

TEST(SweepPoint, GivesTheLastRowOfEachTableAndTheLastMessage) {
  const TempDir directory;
  directory.write("beam.csv", "z (um),power\n1,2\n3,\"4\"\n\n");
  directory.write("empty.csv", "z,power\n");
  directory.write("torn.csv", "z,power\n1\n");
  EXPECT_EQ(sweep::last_rows(directory.path(), {"beam.csv", "empty.csv", "torn.csv", "none.csv"}),
            (sweep::Table::Figures{{"beam.z (um)", "3"}, {"beam.power", "4"}}));
  directory.write("zerith.err", "zerith: warning: a\nzerith: error: b is lost\n\n");
  EXPECT_EQ(sweep::last_message(directory.path(), 255), "b is lost");
  EXPECT_EQ(sweep::last_message(directory.path(), 137), "ended by signal 9");
}

}  // namespace
