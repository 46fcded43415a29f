#include "main/output_file.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <random>
#include <sstream>

#include "support/process.h"

namespace {

// Numbers look as a stream would write them: six digits, the exponent as it pleases, zeros cut.
TEST(OutputFile, WritesNumbersAsAStreamDoes) {
  std::vector<double> values = {0.0, -0.0, 1e5, 1e-5, 999999.5, DBL_MAX, HUGE_VAL, -HUGE_VAL, NAN};
  std::mt19937_64 bits(20240229);
  for (int i = 0; i < 60000; ++i) {
    values.push_back(std::bit_cast<double>(bits()));                            // any exponent
    values.push_back(static_cast<double>(bits() >> 11U) * 0x1p-50);             // around one
    values.push_back(static_cast<double>(bits() % 4000001) / 2.0 - 1000000.0);  // ties
  }
  const TempDir directory;
  std::ostringstream expected;
  {
    OutputFile file(directory.path("n.csv").string(), OutputFile::Mode::kReplace);
    for (const double value : values) {
      file << value << ',';
      expected << value << ',';
    }
  }
  EXPECT_GT(expected.str().size(), std::size_t{1} << 20U);  // several times the buffer
  EXPECT_TRUE(directory.read("n.csv") == expected.str());
}

TEST(OutputFile, SaysOnceThatItCouldNotBeWrittenAndATrialLeavesNoTrace) {
  const TempDir directory;
  directory.write("old", "contents");
  testing::internal::CaptureStderr();
  {
    OutputFile file("/dev/full", OutputFile::Mode::kReplace);
    for (int i = 0; i < 300; ++i) file << std::string(5000, 'x');
  }
  // /dev/full is not opened: that could have effects.
  for (const char* name : {"new", "old", "/dev/full", "/none/such"})
    warn_if_unwritable(directory.path(name).string());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "zerith: warning: /dev/full: not fully written: No space left on device\n"
            "zerith: warning: /none/such: will not be written: No such file or directory\n");
  EXPECT_FALSE(directory.has("new"));
  EXPECT_EQ(directory.read("old"), "contents");
}

}  // namespace
