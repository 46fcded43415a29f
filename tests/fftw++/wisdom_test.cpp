#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "cli/configuration.h"
#include "fftw++.h"
#include "support/errors.h"
#include "support/process.h"
#include "wisdom.h"

namespace {

using fftwpp::fftw;

// The wisdom file after planning n x n.
std::string written_wisdom(unsigned n) {
  const TempDir directory;
  fftw_forget_wisdom();
  std::vector<Complex> out(n * n);
  const std::string name = directory.path("wisdom").string();
  fftw::WisdomName = name.c_str();
  fftw::Wise = true;
  const fftwpp::fft2d transform(n, n, -1, nullptr, out.data());
  fftw::WisdomName = "wisdom3.txt";
  return directory.read("wisdom");
}

// Plans like a process at its start, and expects no message. With FFTW_WISDOM_ONLY there is no plan
// without wisdom.
void plan(const std::string& wisdom, unsigned effort = FFTW_MEASURE, unsigned n = 32) {
  fftw_forget_wisdom();
  fftw::Wise = false;
  fftw::effort = effort;
  fftw::WisdomName = wisdom.c_str();
  std::vector<Complex> out(n * n);
  const Messages messages;
  const fftwpp::fft2d transform(n, n, -1, nullptr, out.data());
  EXPECT_EQ(messages.text(), "");
  fftw::effort = FFTW_MEASURE;
  fftw::WisdomName = "wisdom3.txt";
}

TEST(Wisdom, IsWrittenAndSparesMeasuring) {
  EXPECT_STREQ(fftw::WisdomName, "wisdom3.txt");
  const TempDir directory;
  const std::string name = directory.path("wisdom").string();
  plan(name);
  plan(name, FFTW_MEASURE | FFTW_WISDOM_ONLY);
  plan("/none/such/wisdom");
}

TEST(Wisdom, GarbageIsOverwritten) {
  const TempDir directory;
  for (const char* garbage : {"", "(fftw-3.3.10 fftw_wisdom #x1 (", "\xff\xff\xff"}) {
    directory.write("wisdom", garbage);
    plan(directory.path("wisdom").string());
    EXPECT_TRUE(directory.read("wisdom").starts_with("(fftw-")) << garbage;
  }
}

// FFTW ends the process, and this test, on some of these, such as a blank that became a digit. Each
// byte takes values that continue a number, a name and the layout.
TEST(Wisdom, NoDamagedByteEndsTheProcess) {
  const std::string sound = written_wisdom(4);
  const TempDir directory;
  const std::string name = directory.path("wisdom").string();
  for (std::size_t i = 0; i < sound.size(); ++i)
    for (const char damage : {' ', '\n', '1', 'f', 'z'}) {
      std::string damaged = sound;
      damaged[i] = damage;
      directory.write("wisdom", damaged);
      plan(name, FFTW_ESTIMATE, 4);
    }
}

// FFTW takes any blanks between words and any text after the end. The plan comes from the wisdom:
// without it there is none.
TEST(Wisdom, IsReadInEveryLayoutThatFFTWTakes) {
  const std::string written = written_wisdom(60);
  const auto with = [&](const std::string& pattern, const std::string& replacement) {
    return std::regex_replace(written, std::regex(pattern), replacement);
  };
  const TempDir directory;
  for (const std::string& text : {written, written + "\n", written + "\n\n(more", with("\n$", ""),
                                  with("\n  ", "\n"), with("\n  ", "\n\t\t"), with("\n", "\r\n"),
                                  with("\n  ", " "), with(" #x", "  #x"), "\n" + written}) {
    directory.write("wisdom", text);
    const std::string name = directory.path("wisdom").string();
    fftw_forget_wisdom();
    const bool is_taken_by_fftw = fftw_import_wisdom_from_filename(name.c_str()) != 0;
    EXPECT_TRUE(is_taken_by_fftw || text.starts_with("\n")) << text;
    EXPECT_TRUE(fftwpp::is_sound_wisdom(text)) << text;
    if (is_taken_by_fftw) plan(name, FFTW_MEASURE | FFTW_WISDOM_ONLY, 60);
  }
}

// A written file is FFTW's own, and sound at any size. A part of it is not.
TEST(Wisdom, IsSoundFromEndToEnd) {
  std::string sound = written_wisdom(60);
  EXPECT_TRUE(fftwpp::is_sound_wisdom(sound)) << sound;
  for (std::size_t length = 0; length + 1 < sound.size(); ++length)
    ASSERT_FALSE(fftwpp::is_sound_wisdom(sound.substr(0, length))) << length;
  for (const char* wide :
       {"#x111bdd #x11bdd #x0", "#x11bdd #x100000 #x0", "#x11bdd #x11bdd #x200"}) {
    std::string changed = sound;
    const std::size_t at = changed.find("#x11bdd #x11bdd #x0");
    ASSERT_NE(at, std::string::npos);
    EXPECT_FALSE(fftwpp::is_sound_wisdom(changed.replace(at, 19, wide))) << wide;
  }
}

std::multiset<std::string> lines_of(const std::string& text) {
  std::istringstream stream(text);
  std::multiset<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.insert(line);
  return lines;
}

// Device runs plan on the host if there is no device. Their planner must be the CPU branch's.
TEST(WisdomOfRuns, IsOneForAllBranches) {
  const TempDir directory;
  directory.write("a.cfg", configuration());
  std::multiset<std::string> first;
  for (const auto& options : {std::vector<std::string>{"-p"}, {"-g", "-p"}, {"-p"}}) {
    std::vector<std::string> arguments = {"-q", "-i", "a.cfg"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ASSERT_EQ(run_zerith(directory, arguments).status, 0);
    const auto lines = lines_of(directory.read("wisdom3.txt"));
    EXPECT_GT(lines.size(), 2U);
    if (first.empty()) first = lines;
    EXPECT_EQ(lines, first);
  }
}

// A pipe that nobody writes to or reads from, an endless device and a folder are skipped and
// unchanged. The run still has a result.
TEST(WisdomOfRuns, NeedsNoFile) {
  for (const std::string make : {"mkfifo", "ln -s /dev/zero", "mkdir", "ln -s elsewhere"}) {
    const TempDir directory;
    directory.write("a.cfg", configuration());
    run_shell(directory, make + " wisdom3.txt");
    const RunResult run = run_shell(directory, "exec timeout 20 \"$ZERITH\" -q -i a.cfg -p");
    EXPECT_EQ(run.status, 0) << make << run.err;
    EXPECT_TRUE(directory.has("E_cpu.csv")) << make;
    EXPECT_EQ(std::filesystem::is_regular_file(directory.path("wisdom3.txt")),
              make == "ln -s elsewhere");
  }
}

}  // namespace
