// One call of the operating system fails, each in its turn: no crash, nothing wrong and nothing
// lost without a word.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <sstream>
#include <thread>

#include "cli/configuration.h"
#include "support/process.h"

namespace {

constexpr int kMostRuns = 120;  // of a kind; of more calls than that every so-manieth fails
constexpr const char* kResults[] = {
    "N_sys.csv",       "E_inp.csv", "F_inp.csv",     "E_cpu.csv",       "EFlux_cpu.csv",
    "EFlux_cpu_Z.csv", "E_gpu.csv", "EFlux_gpu.csv", "EFlux_gpu_Z.csv", "run.csv"};
const std::vector<std::string> kRuns[] = {{"-p"}, {"-p", "--fast"}, {"-g", "-p", "-c"}};

class Faults : public testing::Test {
 protected:
  void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer has allocation and files in its own hands";
#endif
    directory.write("a.cfg", configuration("", "z = 0.5\nn = 1\n[/layer]\n[layer]\nz = 1\nn = 1.5",
                                           "shape = gaussian\nsigmax = 2\nsigmay = 1"));
  }

  // Runs afresh, but for the wisdom of the first run: plans are not measured again.
  RunResult run(std::vector<std::string> options, const std::string& fault) {
    options.insert(options.end(), {"-i", "a.cfg", "-r", "run.csv", "-l", "-1"});
    for (const char* name : kResults) std::filesystem::remove(directory.path(name));
    if (!wisdom.empty()) directory.write("wisdom3.txt", wisdom);
    return run_zerith(directory, options,
                      {{"LD_PRELOAD", ZERITH_FAULTS}, {"FAULT", fault}, {"COUNTS", "counts"}});
  }

  long calls(const std::string& kind) {
    std::istringstream counts(directory.read("counts"));
    std::string name;
    for (long count = 0; counts >> name >> count;)
      if (name == kind) return count;
    return 0;
  }

  // The run's results; the times in the record are the run's own.
  std::map<std::string, std::string> results() {
    std::map<std::string, std::string> texts;
    for (const char* name : kResults) texts[name] = directory.read(name);
    texts["run.csv"] = std::regex_replace(
        texts["run.csv"], std::regex(";[-0-9.e+]+;[-0-9.e+]+;[^;]*;[-0-9.e+]+\n"), ";T\n");
    return texts;
  }

  // For each of the runs and the n-th call of the kind, in steps: check(n, run, whole results).
  template <typename Check>
  void fail_each(const std::string& kind, Check check) {
    for (const std::vector<std::string>& options : kRuns) {
      wisdom.clear();
      ASSERT_EQ(run(options, "").status, 0);
      wisdom = directory.read("wisdom3.txt");
      ASSERT_EQ(run(options, "").status, 0);
      const auto whole = results();
      const long count = calls(kind);
      ASSERT_GT(count, 0) << kind;
      const long step = (count + kMostRuns - 1) / kMostRuns;
      for (long n = 1; n <= count; n += step) {
        SCOPED_TRACE(kind + " " + std::to_string(n) + " of " + std::to_string(count) + " " +
                     testing::PrintToString(options));
        check(run(options, kind + ":" + std::to_string(n)), whole);
      }
    }
  }

  TempDir directory;
  std::string wisdom;
};

// Status 0, and nothing is missing; or a message and status 255, or 1 from the transforms, with
// files that are whole or not there; a record may end behind a row. Inside FFTW a failed allocation
// aborts, with FFTW's message.
TEST_F(Faults, MemoryThatRunsOutEndsTheRunWithAMessage) {
  fail_each("memory", [this](const RunResult& run, const auto& whole) {
    const bool is_aborted_by_fftw =
        run.status == 128 + SIGABRT && run.err.find("fftw") != std::string::npos;
    EXPECT_TRUE(run.status == 0 || run.status == 255 || run.status == 1 || is_aborted_by_fftw)
        << run.status << run.err;
    EXPECT_TRUE(run.status == 0 || !run.err.empty());
    for (const auto& [name, text] : results()) {
      const bool is_begun = text.empty() || (name == "run.csv" && text.ends_with('\n'));
      EXPECT_TRUE(text == whole.at(name) ||
                  (run.status != 0 && is_begun && whole.at(name).starts_with(text)))
          << name << ": " << text << run.err;
    }
  });
}

// What is not as it should be is named.
TEST_F(Faults, FilesThatFailAreNamed) {
  for (const std::string kind : {"open", "write", "close"})
    fail_each(kind, [this](const RunResult& run, const auto& whole) {
      EXPECT_TRUE(run.status == 0 || run.status == 255 || run.status == 1) << run.status;
      for (const auto& [name, text] : results())
        EXPECT_TRUE(text == whole.at(name) || run.status != 0 ||
                    run.err.find(name) != std::string::npos)
            << name << run.err;
      EXPECT_TRUE(run.status == 0 || !run.err.empty());
    });
}

// A team of three is two more threads than one, where the work outweighs waking them.
TEST_F(Faults, ThreadsAreAsManyAsAskedFor) {
  const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
  for (const std::string sum : {"--fast", "-q"})
    for (const auto& [threads, started] : {std::pair("1", 0), {"3", 2}, {"0", cores - 1}}) {
      EXPECT_EQ(run({"-p", sum, "--threads", threads, "--set", "global.nx=64", "--set",
                     "global.ny=64", "--set", "global.nz=3"},
                    "")
                    .status,
                0);
      EXPECT_EQ(calls("thread"), started) << sum;
    }
}

// Where the system grants one helper of two, or none, the run goes on with those there are.
TEST_F(Faults, ThreadsThatCannotBeStartedAreDoneWithout) {
  for (const auto& [fault, started] : {std::pair("thread:1", 1), {"thread:2", 2}}) {
    EXPECT_EQ(run({"-p", "--fast", "--threads", "3", "--set", "global.nx=64", "--set",
                   "global.ny=64", "--set", "global.nz=3"},
                  fault)
                  .status,
              0);
    EXPECT_EQ(calls("thread"), started);
  }
}

}  // namespace
