#include <gtest/gtest.h>

#include "chCommandLine.h"
#include "chTimer.h"

namespace {

using Words = std::vector<std::string>;

// What is read for keyword k; -77 if it is not found.
int number(Words words) {
  std::vector<char*> argv;
  words.insert(words.begin(), "zerith");
  for (std::string& word : words) argv.push_back(word.data());
  int value = -77;
  const bool is_found = chCommandLineGet(&value, "k", static_cast<int>(argv.size()), argv.data());
  EXPECT_EQ(is_found, value != -77);
  EXPECT_EQ(chCommandLineGetBool("k", static_cast<int>(argv.size()), argv.data()), is_found);
  return value;
}

// One dash or two; the last value wins and is taken as it stands.
TEST(Options, AreFoundAnywhereOnTheLine) {
  for (const auto& [words, value] :
       std::vector<std::pair<Words, int>>{{{}, -77},
                                          {{"3"}, -77},
                                          {{"-k", "3"}, 3},
                                          {{"--k", "0", "-k", "1"}, 1},
                                          {{"---k", "3"}, -77},
                                          {{"k", "3"}, -77},
                                          {{"-", "--", "", "-k=1", "-kk", "-K"}, -77},
                                          {{"-k", "-1"}, -1},
                                          {{"-k", "16x"}, 16},
                                          {{"-k", "abc"}, 0},
                                          {{"-k", "0x10"}, 0},
                                          {{"-k", "4294967298"}, 2},  // the lower half of 2^32 + 2
                                          {{"-k", "-k", "5"}, 0},
                                          {{"-i", "-k", "5"}, 5}})
    EXPECT_EQ(number(words), value) << testing::PrintToString(words);
  EXPECT_EXIT(number({"-k", "1", "--k"}), testing::ExitedWithCode(255),
              "zerith: error: option --k ends the command line without its value");
}

TEST(Timer, CountsSecondsAndNanoseconds) {
  const timespec begin = {1, 900000000};
  const timespec end = {3, 150000000};
  EXPECT_DOUBLE_EQ(chTimerElapsedTime(&begin, &end), 1.25);
  EXPECT_EQ(ChTimer().getTime(), 0.0);  // never ran
}

}  // namespace
