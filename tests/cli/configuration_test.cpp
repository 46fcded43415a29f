// What the real program makes of a configuration that it cannot take: a message with file and line,
// status 255, and nothing written.
#include <gtest/gtest.h>

#include "cli/configuration.h"
#include "support/process.h"

namespace {

using Strings = std::vector<std::string>;

std::size_t files_in(const TempDir& directory) {
  const std::filesystem::directory_iterator begin(directory.path());
  return static_cast<std::size_t>(std::distance(begin, {}));
}

// The first 79 characters are a line like any other; the log shows them, then the run ends.
TEST(Configuration, TakesWhatFitsOfALineThatIsTooLong) {
  const TempDir directory;
  directory.write("a.cfg", "[global]\nnx = 12" + std::string(71, ' ') + "345\nny = 7\n");
  const RunResult result = run_zerith(directory, {"-i", "a.cfg"});
  EXPECT_EQ(result.status, 255);
  EXPECT_TRUE(result.out.ends_with("\t\t\t\t[global]\n\t\t\t\t\tnx =\t123\n")) << result.out;
  EXPECT_EQ(
      result.err,
      "zerith: error: a.cfg: line 2: the line has 80 characters or more, blanks included, and "
      "the limit is 79; shorten or break it\n");
}

// A line without an end takes no more memory than one within the limit.
TEST(Configuration, EndsAtAnEndlessLine) {
  const TempDir directory;
  const RunResult zeros = run_zerith(directory, {"-q", "-i", "/dev/zero"});
  EXPECT_EQ(std::tuple(zeros.status, zeros.out), std::tuple(255, ""));
  EXPECT_TRUE(zeros.err.starts_with("zerith: error: /dev/zero: line 1: the line has 80"))
      << zeros.err;
}

TEST(Configuration, RefusesNewKeysBeforeAnythingIsWritten) {
  const std::pair<std::string, const char*> kCases[] = {
      {configuration("edge = 5"), "a.cfg: line 10: [global]: edge is wider than half the domain"},
      {configuration("", "levels = 0\ntype = lens"),
       "a.cfg: line 19: value '0' of 'levels' in [layer] must be"},
      {configuration("", "n = 1\nover = 1"),
       "a.cfg: line 17: [layer]: over = 1 paints over the layer before"},
      {configuration() + "[monitor]\ntype = beam\n[/monitor]\n",
       "a.cfg: line 21: [monitor]: needs a file"},
      {configuration() + "[monitor]\ntype = beam\n",
       "a.cfg: line 21: [monitor] has no closing tag"}};
  for (const auto& [text, message] : kCases) {
    const TempDir directory;
    directory.write("a.cfg", text);
    const RunResult result = run_zerith(directory, {"-q", "-i", "a.cfg", "-p"});
    EXPECT_EQ(std::tuple(result.status, result.out), std::tuple(255, "")) << message;
    EXPECT_TRUE(result.err.starts_with(std::string("zerith: error: ") + message)) << result.err;
    EXPECT_EQ(files_in(directory), 1U) << message;
  }
}

// A monitor shows on the log and changes no byte of what follows it.
TEST(Configuration, EchoesAMonitor) {
  const TempDir directory;
  directory.write("a.cfg", configuration());
  directory.write("b.cfg", configuration() + "[monitor]\ntype = beam\nfile = b.csv\n[/monitor]\n");
  std::string without = without_times(run_zerith(directory, {"-i", "a.cfg"}).out);
  std::string with = without_times(run_zerith(directory, {"-i", "b.cfg"}).out);
  const std::string echo =
      "\t\t\t\t[monitor]\n\t\t\t\t\ttype =\tbeam\n\t\t\t\t\tfile =\tb.csv\n\t\t\t\t[/monitor]\n";
  ASSERT_NE(with.find(echo), std::string::npos) << with;
  with.erase(with.find(echo), echo.size());
  for (std::size_t at; (at = without.find("a.cfg")) != std::string::npos;) without[at] = 'b';
  EXPECT_EQ(with, without);
}

// What an override gives is what the same line in the file gives, and the log shows both.
TEST(Configuration, TakesOverridesFromTheCommandLine) {
  const TempDir file;
  const TempDir line;
  file.write("a.cfg", configuration("ny = 8", "n = 1.25", "shape = plane\nlambda = 2"));
  line.write("a.cfg", configuration("ny = 8", "n = 1.5", "shape = plane\nlambda = 1"));
  const Strings overrides = {"-i",    "a.cfg",        "-p", "--set", "layer1.n=1.25",
                             "--set", "wave.lambda=2"};
  EXPECT_EQ(run_zerith(file, {"-i", "a.cfg", "-p"}).status, 0);
  const RunResult run = run_zerith(line, overrides);
  EXPECT_EQ(run.status, 0);
  for (const char* name : {"N_sys.csv", "E_inp.csv", "E_cpu.csv", "EFlux_cpu_Z.csv"})
    EXPECT_EQ(file.read(name), line.read(name)) << name;
  EXPECT_NE(run.out.find("\t\t\t\t\tn =\t1.5\n\t\t\t\t[/layer]\n\t\t\t\t\tlayer1.n =\t1.25\n"
                         "\t\t\t\t\twave.lambda =\t2\n\tParsing ... \t\tdone.\n"),
            std::string::npos)
      << run.out;
  const RunResult slip = run_zerith(line, {"-i", "a.cfg", "-q", "--set", "layer1.nn=2"});
  EXPECT_EQ(slip.status, 255);
  EXPECT_TRUE(slip.err.starts_with("zerith: error: --set layer1.nn=2: unknown key 'nn'"))
      << slip.err;
}

// Advice goes to the error stream with its line, changes no file, and is silent in quiet mode.
TEST(Configuration, AdvisesOnTheScene) {
  const TempDir directory;
  directory.write("a.cfg", configuration("nx = 7\nny = 5", "n = 1"));
  EXPECT_EQ(
      run_zerith(directory, {"-i", "a.cfg"}).err,
      "zerith: warning: a.cfg: line 10: [global]: dx = 0.571429 is above half a wavelength in "
      "the densest medium, 0.5: steep waves are missing; make nx at least 8\n"
      "zerith: warning: a.cfg: line 11: [global]: dy = 0.6 is above half a wavelength in "
      "the densest medium, 0.5: steep waves are missing; make ny at least 6\n"
      "zerith: warning: a.cfg: nx = 7 and ny = 5 differ; the index volume and the files then have "
      "rows of another step than the field, and the spectrum is that of a sheared slice\n");
  EXPECT_EQ(run_zerith(directory, {"-i", "a.cfg", "-q"}).err, "");
}

}  // namespace
