// Runs that are stopped and go on end as if nothing had happened.
#include <gtest/gtest.h>

#include <filesystem>

#include "io/io.h"
#include "support/process.h"

namespace {

const char* const kMonitors =
    "[monitor]\ntype = field\nfile = box.h5\nsave = E,flux,index\nevery = 3\nx1 = -2\nx2 = 3\n"
    "[/monitor]\n[monitor]\ntype = beam\nfile = beam.csv\nevery = 2\n[/monitor]\n";

std::string scene(int nz) {
  return "[global]\nscale = um\npolarization = te\nx = 9\ny = 8\nz = 20\nnx = 24\nny = 24\nnz = " +
         std::to_string(nz) +
         "\n[/global]\n[wave]\nshape = gaussian\nlambda = 0.8\namp = 30\nsigmax = 2\nsigmay = 3\n"
         "theta = 10\n[/wave]\n[layer]\nz = 4\nn = 1\n[/layer]\n"
         "[layer]\ntype = taper\nz = 6\nrin = 3\nrout = 1\nn = 1.5\nne = 1.45\nke = 0.001\n"
         "[/layer]\n"
         "[layer]\ntype = waveguide\nz = 10\nr = 1\nn = 1.5\nne = 1.45\n[/layer]\n";
}

void expect_same_files(const TempDir& a, const TempDir& b) {
  for (const auto& entry : std::filesystem::directory_iterator(a.path())) {
    const std::string name = entry.path().filename();
    if (name != "wisdom3.txt" && name != "a.cfg" && name != "log") {
      EXPECT_TRUE(a.read(name) == b.read(name)) << name;
    }
  }
}

// Killed at some twenty moments, whatever it is doing there, and called again each time.
void expect_to_survive(const std::string& options, const std::string& monitors = "") {
  SCOPED_TRACE(options);
  const TempDir whole;
  const TempDir stopped;
  const std::string description = scene(90) + monitors;
  whole.write("a.cfg", description);
  stopped.write("a.cfg", description);
  // Both plan alike: a plan that is measured anew may differ in the last bit. Both have the same
  // options, which the file of the field tells of.
  const std::string command =
      "$ZERITH -i a.cfg --checkpoint here --checkpoint-every 0 " + options + " > log";
  ASSERT_EQ(run_shell(whole, command).status, 0);
  if (whole.has("wisdom3.txt"))  // the device has none
    std::filesystem::copy_file(whole.path("wisdom3.txt"), stopped.path("wisdom3.txt"));
  // Half of the kills wait for a checkpoint of this start: however busy the machine, the run moves
  // on. The others fall where they fall, into planning, writing or the first steps.
  const RunResult run = run_shell(
      stopped,
      "killed=0\nfor t in 02 05 03 08 04 11 06 09 07 05 12 04 10 06 08 03 07 09 05 06; do\n"
      "  rm -f before; [ ! -e here ] || ln here before\n"
      "  " +
          command +
          " 2>&1 &\n"
          "  while [ $((killed % 2)) -eq 0 ] && kill -0 $! 2>/dev/null &&\n"
          "        { [ ! -e here ] || [ here -ef before ]; }; do sleep 0.01; done\n"
          "  sleep 0.$t; kill -KILL $! 2>/dev/null; wait $! 2>/dev/null\n"
          "  [ -e here ] && killed=$((killed + 1))\n"
          "done\n"
          "rm -f before; [ $killed -gt 5 ] || exit 3\n"
          "exec " +
          command);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_FALSE(stopped.has("here"));
  expect_same_files(whole, stopped);
}

TEST(Checkpoint, SurvivesAnyKill) {
  expect_to_survive("-p --fast -x 1 -l 12", writes_field_files() ? kMonitors : "");
  expect_to_survive("-g -p --fast -l -1");
  // The device brings a line of each slice, and all of one that a checkpoint is of.
  expect_to_survive("-g --fast -x 2 -l 11");
}

TEST(Checkpoint, IsWrittenAtASignalAndGoesOn) {
  for (const char* signal : {"TERM", "INT"}) {
    const TempDir whole;
    const TempDir stopped;
    for (const TempDir* directory : {&whole, &stopped}) directory->write("a.cfg", scene(36000));
    const std::string options = " -q -p --fast -x 2 -l 11";
    ASSERT_EQ(run_shell(whole, "$ZERITH -i a.cfg" + options).status, 0);
    std::filesystem::copy_file(whole.path("wisdom3.txt"), stopped.path("wisdom3.txt"));
    const RunResult first = run_shell(
        stopped,
        "$ZERITH -i a.cfg --checkpoint here" + options +
            " & while [ ! -s EFlux_cpu_Z.csv ] && [ ! -e E_cpu.csv ]; do sleep 0.01; done\n"
            "kill -" +
            signal + " $!; wait $!");
    EXPECT_TRUE(first.status > 128) << first.status;
    EXPECT_NE(first.err.find("goes on from here"), std::string::npos) << first.err;
    ASSERT_TRUE(stopped.has("here"));
    // Another run's checkpoint is not gone on from, nor is a damaged one.
    const RunResult other =
        run_shell(stopped, "$ZERITH -i a.cfg --checkpoint here" + options + " --set wave.amp=31");
    EXPECT_EQ(other.status, 255);
    EXPECT_NE(other.err.find("of another run"), std::string::npos) << other.err;
    const RunResult damaged = run_shell(
        stopped, "head -c 5000 here > half; $ZERITH -i a.cfg --checkpoint half" + options);
    EXPECT_EQ(damaged.status, 255);
    EXPECT_NE(damaged.err.find("damaged"), std::string::npos) << damaged.err;
    std::filesystem::remove(stopped.path("half"));
    EXPECT_EQ(run_shell(stopped, "$ZERITH -i a.cfg --checkpoint here" + options).status, 0);
    expect_same_files(whole, stopped);
  }
}

}  // namespace
