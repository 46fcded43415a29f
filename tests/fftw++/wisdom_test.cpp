#include <gtest/gtest.h>

#include "fftw++.h"
#include "support/process.h"

namespace {

using fftwpp::fft2d;
using fftwpp::fftw;

// A process at its start, as far as wisdom goes, in a folder of its own.
class Wisdom : public testing::Test {
 protected:
  Wisdom() : name_(directory_.path("wisdom3.txt").string()) {
    EXPECT_STREQ(fftw::WisdomName, "wisdom3.txt");
    fftw::WisdomName = name_.c_str();
    start_over();
  }
  ~Wisdom() override {
    fftw::WisdomName = "wisdom3.txt";
    fftw::effort = FFTW_MEASURE;
  }
  void start_over() {
    fftw_forget_wisdom();
    fftw::Wise = false;
    fftw::effort = FFTW_MEASURE;
  }
  // Plans, with wisdom alone if so said: without wisdom there is no plan then.
  void plan(unsigned n, bool by_wisdom_alone = false) {
    if (by_wisdom_alone) fftw::effort |= FFTW_WISDOM_ONLY;
    const fft2d transform(n, n, -1, nullptr, out_.data());
  }
  [[nodiscard]] std::string text() const { return directory_.read("wisdom3.txt"); }

  TempDir directory_;
  std::string name_;
  std::vector<Complex> out_ = std::vector<Complex>(32 * 32);
};

TEST_F(Wisdom, IsWrittenWithoutAWordAndSparesMeasuring) {
  testing::internal::CaptureStderr();
  plan(32);
  EXPECT_EQ(text().rfind("(fftw-", 0), 0U);
  start_over();
  plan(32, true);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(fftw::Wise);
}

TEST_F(Wisdom, IsReadOncePerProcessAndWrittenAfterEveryPlan) {
  plan(32);
  directory_.write("wisdom3.txt", "");
  plan(16);
  EXPECT_NE(text(), "");
  fftw_forget_wisdom();
  EXPECT_EXIT(plan(32, true), testing::ExitedWithCode(1), "Unable to construct FFTW plan");
}

TEST_F(Wisdom, GarbageIsOverwritten) {
  for (const char* garbage :
       {"", "no wisdom\n", "(fftw-3.3.10 fftw_wisdom #x1 (", "\xff\xff\xff"}) {
    directory_.write("wisdom3.txt", garbage);
    start_over();
    testing::internal::CaptureStderr();
    plan(16);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(text().rfind("(fftw-", 0), 0U) << garbage;
    EXPECT_GT(text().size(), 100U);
  }
}

TEST_F(Wisdom, FolderThatCannotBeWrittenIsIgnored) {
  name_ = "/none/such/wisdom3.txt";
  fftw::WisdomName = name_.c_str();
  testing::internal::CaptureStderr();
  plan(8);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
