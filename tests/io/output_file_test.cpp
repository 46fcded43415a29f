#include "io/output_file.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <random>
#include <sstream>

#include "support/errors.h"
#include "support/process.h"

namespace {

// Numbers look as a stream writes them: six digits, an exponent if needed, no trailing zeros.
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
    OutputFile file(directory.path("n.csv").string());
    for (const double value : values) {
      file << value << ',';
      expected << value << ',';
    }
  }
  EXPECT_GT(expected.str().size(), std::size_t{1} << 20U);  // several times the buffer
  EXPECT_TRUE(directory.read("n.csv") == expected.str());
}

TEST(OutputFile, SaysOnceThatItCouldNotBeWritten) {
  const Messages messages;
  {
    OutputFile file("/dev/full");
    for (int i = 0; i < 300; ++i) file << std::string(5000, 'x');
  }
  EXPECT_EQ(messages.text(),
            "zerith: error: /dev/full: lost, it is not fully written: No space left on device\n");
}

// Saved text stays. Text after it is removed.
TEST(OutputFile, GoesOnWhereItWasSaved) {
  const TempDir directory;
  const std::string name = directory.path("a").string();
  std::int64_t position = 0;
  {
    OutputFile file(name);
    position = (file << "saved ").save();
    EXPECT_EQ(directory.read("a"), "saved ");
    file << "and lost";
  }
  OutputFile(name, position) << "and gone on";
  EXPECT_EQ(directory.read("a"), "saved and gone on");
  OutputFile("/dev/null", position) << "a device has no length";
  EXPECT_ERROR(OutputFile(name, 100), "a: the run cannot go on");
  EXPECT_ERROR(OutputFile(name + "b", 0), "remove the checkpoint");
}

}  // namespace
