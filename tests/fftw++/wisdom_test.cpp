#include <gtest/gtest.h>

#include "fftw++.h"
#include "support/process.h"

namespace {

using fftwpp::fftw;

// Plans as a process at its start does, as far as wisdom goes, and says nothing. With wisdom alone,
// if so said: without wisdom there is no plan then.
void plan(const std::string& wisdom, unsigned effort = FFTW_MEASURE) {
  fftw_forget_wisdom();
  fftw::Wise = false;
  fftw::effort = effort;
  fftw::WisdomName = wisdom.c_str();
  std::vector<Complex> out(32 * 32);
  testing::internal::CaptureStderr();
  const fftwpp::fft2d transform(32, 32, -1, nullptr, out.data());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
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

}  // namespace
