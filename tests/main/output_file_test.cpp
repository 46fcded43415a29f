#include "main/output_file.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include "support/process.h"

namespace {

// Numbers look as a stream would write them: six digits, the exponent as it pleases, zeros cut.
TEST(OutputFile, WritesNumbersAsAStreamDoes) {
  using Limits = std::numeric_limits<double>;
  std::vector<double> values = {0.0,
                                -0.0,
                                0.5,
                                1e5,
                                123456.5,
                                1234565,
                                999999.5,
                                1e-5,
                                0.00012345649,
                                Limits::max(),
                                Limits::denorm_min(),
                                Limits::infinity(),
                                -Limits::infinity(),
                                Limits::quiet_NaN(),
                                -Limits::quiet_NaN()};
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
  for (const char* name : {"new", "old"}) warn_if_unwritable(directory.path(name).string());
  warn_if_unwritable("/dev/full");  // not opened: that could have effects
  warn_if_unwritable("/none/such");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "zerith: warning: /dev/full: not fully written: No space left on device\n"
            "zerith: warning: /none/such: will not be written: No such file or directory\n");
  EXPECT_FALSE(directory.has("new"));
  EXPECT_EQ(directory.read("old"), "contents");
}

}  // namespace
