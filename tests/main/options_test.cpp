#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "chCommandLine.h"
#include "chTimer.h"
#include "support/errors.h"

namespace {

// The value of keyword k; -77 if it is not found.
int number(const std::string& line) {
  std::istringstream text("zerith " + line);
  std::vector<std::string> words(std::istream_iterator<std::string>(text), {});
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  int value = -77;
  const bool is_found = chCommandLineGet(&value, "k", static_cast<int>(argv.size()), argv.data());
  EXPECT_EQ(is_found, value != -77);
  EXPECT_EQ(chCommandLineGetBool("k", static_cast<int>(argv.size()), argv.data()), is_found);
  return value;
}

// One dash or two. The last value wins. Only the lower 32 bits of a number count.
TEST(Options, AreFoundAnywhereOnTheLine) {
  const std::pair<const char*, int> kLines[] = {
      {"", -77},      {"--k 0 -k 1", 1},         {"---k 3", -77},
      {"k 3", -77},   {"- -- -k=1 -kk -K", -77}, {"-k -1", -1},
      {"-k 16x", 16}, {"-k 4294967298", 2},      {"-k -k 5", 0},
      {"-i -k 5", 5}};
  for (const auto& [line, value] : kLines) EXPECT_EQ(number(line), value) << line;
  EXPECT_ERROR(number("-k 1 --k"), "option --k ends the command line without its value");
}

TEST(Timer, CountsSecondsAndNanoseconds) {
  const timespec begin = {1, 900000000}, end = {3, 150000000};
  EXPECT_DOUBLE_EQ(chTimerElapsedTime(&begin, &end), 1.25);
  EXPECT_EQ(ChTimer().getTime(), 0.0);  // never ran
}

}  // namespace
