// Ends of runs of several ranks: errors, kills and resumed runs.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>
#include <tuple>

#include "ranks.h"

namespace {

std::string scene(int nz, int side = 24) {
  return "[global]\nscale = um\npolarization = te\nx = 9\ny = 8\nz = 20\nnx = " +
         std::to_string(side) + "\nny = " + std::to_string(side) + "\nnz = " + std::to_string(nz) +
         "\nedge = 1\n[/global]\n[wave]\nshape = gaussian\nlambda = 0.8\namp = 30\nsigmax = 2\n"
         "sigmay = 3\ntheta = 10\n[/wave]\n[layer]\nz = 4\nn = 1\n[/layer]\n"
         "[layer]\ntype = taper\nz = 6\nrin = 3\nrout = 1\nn = 1.5\nne = 1.45\n[/layer]\n"
         "[layer]\ntype = waveguide\nz = 10\nr = 1\nn = 1.5\nne = 1.45\n[/layer]\n"
         "[monitor]\ntype = beam\nfile = beam.csv\n[/monitor]\n";
}

void expect_message(const RunResult& run, const std::string& message) {
  EXPECT_EQ(run.status, 255) << run.err;
  EXPECT_EQ(count_of(run.err, "zerith: "), 1) << run.err;
  EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
}

void expect_same_files(const TempDir& a, const TempDir& b) {
  for (const auto& entry : std::filesystem::directory_iterator(a.path())) {
    const std::string name = entry.path().filename();
    if (name.ends_with(".csv")) {
      EXPECT_EQ(differing_values(a.read(name), b.read(name)), 0U) << name;
    }
  }
}

TEST(Ends, AnErrorOfAllIsSaidOnce) {
  const TempDir folder;
  folder.write("a.cfg", scene(8));
  expect_message(run_ranks(folder, 3, "-q -p --fast -i none.cfg"), "error: none.cfg: ");
  EXPECT_FALSE(folder.has("N_sys.csv"));
  // Only the first rank knows that a monitor's file cannot be created.
  expect_message(run_ranks(folder, 2, "-q -p --fast -i a.cfg --field none/f.h5"), "none/f.h5");
  EXPECT_EQ(count_of(run_ranks(folder, 3, "-i a.cfg --fast --nonsense -p").err, "--nonsense"), 1);
}

// The second rank has no configuration in its folder.
TEST(Ends, AnErrorOfOneEndsAll) {
  const TempDir folder;
  folder.write("a.cfg", scene(8));
  std::filesystem::create_directory(folder.path("elsewhere"));
  const std::string command = "\"$ZERITH\" -q -p --fast -i a.cfg";
  const RunResult run = run_shell(
      folder, mpirun(1) + command + " : -n 1 -wdir elsewhere " + command + " : -n 1 " + command);
  expect_message(run, "error: rank 1: a.cfg: ");
}

TEST(Ends, RefusesWhatOneProcessHasToDo) {
  const TempDir folder;
  folder.write("a.cfg", scene(8));
  const std::string given = "-q -i a.cfg -p ";
  expect_message(run_ranks(folder, 2, given), "--fast");
  expect_message(run_ranks(folder, 2, given + "--fast -g"), "-g computes");
  expect_message(run_ranks(folder, 2, given + "--fast --tolerance 1e-6"), "--tolerance");
  expect_message(run_ranks(folder, 2, given + "--fast -x 1 -l -1"), "-l -1");
  expect_message(run_ranks(folder, 2, given + "--fast --set global.ny=20"), "nx and ny differ");
  expect_message(run_ranks(folder, 2, given + "--fast --sweep global.lambda=1,2"), "--points");
  EXPECT_FALSE(folder.has("N_sys.csv"));
  // One process under mpirun has no such limits.
  EXPECT_EQ(run_ranks(folder, 1, given).status, 0);
}

// PMIx alone gives no number of processes.
TEST(Starts, JoinsUnderALauncherWithoutACount) {
  const TempDir folder;
  folder.write("a.cfg", scene(8));
  const RunResult run = run_shell(
      folder, mpirun(2) +
                  "env -u OMPI_COMM_WORLD_SIZE -u OMPI_COMM_WORLD_RANK -u PMI_SIZE -u PMI_RANK "
                  "\"$ZERITH\" -i a.cfg -p --fast --check");
  EXPECT_NE(run.out.find(" at the first of 2 processes"), std::string::npos) << run.out << run.err;
}

// MPI itself needs more files and a session folder.
TEST(Starts, AloneWithoutMpi) {
  const TempDir alone;
  const TempDir usual;
  for (const TempDir* folder : {&alone, &usual}) folder->write("a.cfg", scene(8));
  const std::string command = "exec \"$ZERITH\" -q -i a.cfg -p --fast -x 1 -l 12";
  const RunResult run = run_shell(alone, "ulimit -n 20; export TMPDIR=/none; " + command);
  EXPECT_EQ(std::tuple(run.status, run.err), std::tuple(0, ""));
  EXPECT_EQ(run_shell(usual, mpirun(1) + command.substr(5)).status, 0);
  expect_same_files(usual, alone);
}

TEST(Ends, AnswersOnce) {
  const TempDir folder;
  folder.write("a.cfg", scene(8));
  EXPECT_EQ(run_ranks(folder, 3, "--version").out, "Version 0.10\n");
  const auto without_shares = [](const std::string& report) {
    return std::regex_replace(report, std::regex("(memory|time) [^\n]*"), "$1");
  };
  const RunResult alone = run_zerith(folder, {"-i", "a.cfg", "-p", "--fast", "--check"});
  const RunResult check = run_ranks(folder, 3, "-i a.cfg -p --fast --check");
  EXPECT_EQ(without_shares(check.out), without_shares(alone.out));
  EXPECT_NE(check.out.find(" at the first of 3 processes"), std::string::npos) << check.out;
  EXPECT_EQ(check.status, alone.status);
}

// A whole rank is killed at any moment. The run resumes each time with another number of ranks.
TEST(Ends, GoesOnWithAnyNumberOfRanks) {
  const TempDir whole;
  const TempDir stopped;
  whole.write("a.cfg", scene(150));
  stopped.write("a.cfg", scene(150));
  const std::string options = "-q -i a.cfg -p --fast -x 1 -l 12";
  ASSERT_EQ(run_shell(whole, "\"$ZERITH\" " + options).status, 0);
  const std::string command = " \"$ZERITH\" --checkpoint here --checkpoint-every 0 " + options;
  const std::string several = launcher() + " -n $n" + command;
  const std::string go_on = mpirun(2) + command;
  // A rank is the program, not its launcher.
  const RunResult run = run_shell(
      stopped,
      "for n in 2 5 3; do\n"
      "  cp here last 2>/dev/null\n"
      "  (" +
          several +
          ") >log 2>&1 & launcher=$!\n"
          "  rm -f seen; for i in $(seq 300); do\n"
          "    [ -e here ] && ! cmp -s here last && break\n"
          "    kill -0 $launcher 2>/dev/null || break; sleep 0.05\n"
          "  done\n"
          "  rank=$(ps -e -o pid=,ppid= | awk -v p=$launcher '$2 == p { print $1; exit }')\n"
          "  begin=$(date +%s)\n"
          "  [ -n \"$rank\" ] && kill -KILL $rank\n"
          "  wait $launcher; status=$?\n"
          "  echo \"$n $status $(($(date +%s) - begin))\" >>ends\n"
          "done\n"
          "[ -e here ] || exit 3\n" +
          go_on);
  ASSERT_EQ(run.status, 0) << run.err << stopped.read("log") << stopped.read("ends");
  EXPECT_FALSE(stopped.has("here"));
  expect_same_files(whole, stopped);
  // Each run ended within seconds of the kill, with an error.
  std::istringstream ends(stopped.read("ends"));
  int ranks = 0;
  int status = 0;
  int seconds = 0;
  int count = 0;
  for (; ends >> ranks >> status >> seconds; ++count) {
    EXPECT_NE(status, 0) << ranks << " ranks";
    EXPECT_LT(seconds, 30) << ranks << " ranks";
  }
  EXPECT_EQ(count, 3);
}

// Batch systems send a signal to all ranks before they end a job.
TEST(Ends, StopsAtASignalWithACheckpoint) {
  const TempDir whole;
  const TempDir stopped;
  whole.write("a.cfg", scene(150));
  stopped.write("a.cfg", scene(150));
  const std::string options = "-q -i a.cfg -p --fast -x 1 -l 12";
  ASSERT_EQ(run_shell(whole, "\"$ZERITH\" " + options).status, 0);
  const std::string command = " \"$ZERITH\" --checkpoint here --checkpoint-every 0 " + options;
  const std::string first = mpirun(3) + command;
  const std::string go_on = mpirun(2) + command;
  const RunResult run = run_shell(
      stopped,
      "(" + first +
          ") >log 2>err & launcher=$!\n"
          "for i in $(seq 300); do [ -e here ] && break; sleep 0.05; done\n"
          "for p in $(ps -e -o pid=,ppid= | awk -v p=$launcher '$2 == p { print $1 }'); do\n"
          "  kill -TERM $p; done\n"
          "wait $launcher; [ -e here ] || exit 3\n" +
          go_on);
  ASSERT_EQ(run.status, 0) << run.err << stopped.read("err");
  EXPECT_EQ(count_of(stopped.read("err"), "stopped by a signal"), 1) << stopped.read("err");
  expect_same_files(whole, stopped);
}

}  // namespace
