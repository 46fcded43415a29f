// The transforms against the sum that defines them.
#include <fftw3.h>
#include <gtest/gtest.h>

#include <complex>
#include <cstdlib>
#include <numbers>
#include <string>
#include <vector>

#include "cufft.h"
#include "device_array.h"

namespace {

using cpx = std::complex<double>;

constexpr int kNx = 6;  // rows
constexpr int kNy = 5;

std::vector<cpx> samples() {
  std::vector<cpx> values;
  for (int v = 0; v < kNx * kNy; ++v) values.emplace_back(std::sin(3 * v), std::cos(v * v));
  return values;
}

cpx dft(const std::vector<cpx>& in, int direction, int row, int column) {
  cpx sum = 0;
  for (int r = 0; r < kNx; ++r)
    for (int c = 0; c < kNy; ++c) {
      const double turns = double(row * r) / kNx + double(column * c) / kNy;
      sum +=
          in[std::size_t(r * kNy + c)] * std::polar(1.0, direction * 2 * std::numbers::pi * turns);
    }
  return sum;
}

class StandinTransforms : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(cufftPlan2d(&plan, kNx, kNy, CUFFT_Z2Z), CUFFT_SUCCESS); }
  void TearDown() override {
    EXPECT_EQ(cufftDestroy(plan), CUFFT_SUCCESS);
    EXPECT_EQ(cufftDestroy(plan), CUFFT_INVALID_PLAN);
  }
  static double2* data(const DeviceArray<cpx>& array) {
    return reinterpret_cast<double2*>(static_cast<cpx*>(array));
  }
  const DeviceArray<cpx> input{samples()}, output{samples()};
  cufftHandle plan = 0;
};

TEST_F(StandinTransforms, AreTheUnnormalisedSums) {
  for (const int direction : {CUFFT_FORWARD, CUFFT_INVERSE})
    for (const auto* target : {&output, &input}) {
      const std::vector<cpx> in = input.download();
      ASSERT_EQ(cufftExecZ2Z(plan, data(input), data(*target), direction), CUFFT_SUCCESS);
      const std::vector<cpx> out = target->download();
      for (int r = 0; r < kNx; ++r)
        for (int c = 0; c < kNy; ++c) {
          const cpx expected = dft(in, direction, r, c);
          ASSERT_LE(std::abs(out[std::size_t(r * kNy + c)] - expected), 1e-11);
        }
    }
}

TEST_F(StandinTransforms, RefuseWhatTheyCannotDo) {
  double2* memory = data(input);
  cufftHandle single = 0;
  cufftHandle none = 0;
  EXPECT_EQ(cufftPlan2d(&none, 0, 4, CUFFT_Z2Z), CUFFT_INVALID_SIZE);
  EXPECT_EQ(cufftPlan2d(&none, 4, -1, CUFFT_Z2Z), CUFFT_INVALID_SIZE);
  ASSERT_EQ(cufftPlan2d(&single, kNx, kNy, CUFFT_C2C), CUFFT_SUCCESS);
  EXPECT_EQ(cufftExecZ2Z(single, memory, memory, CUFFT_FORWARD), CUFFT_INVALID_TYPE);
  EXPECT_EQ(cufftExecZ2Z(none, memory, memory, CUFFT_FORWARD), CUFFT_INVALID_PLAN);
  EXPECT_EQ(cufftExecZ2Z(plan, memory, memory, 0), CUFFT_INVALID_VALUE);
  EXPECT_EQ(cudaGetLastError(), cudaSuccess);
  EXPECT_EQ(cufftExecZ2Z(plan, memory, memory + 1, CUFFT_FORWARD), CUFFT_EXEC_FAILED);
  EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress);
  EXPECT_EQ(input.download(), samples());
  EXPECT_EQ(cufftDestroy(single), CUFFT_SUCCESS);
}

// The wisdom file belongs to the CPU path.
TEST_F(StandinTransforms, LeaveNoWisdom) {
  const auto wisdom = [] {
    char* text = fftw_export_wisdom_to_string();
    std::string copy(text);
    std::free(text);
    return copy;
  };
  const std::string before = wisdom();
  ASSERT_EQ(cufftExecZ2Z(plan, data(input), data(output), CUFFT_FORWARD), CUFFT_SUCCESS);
  EXPECT_EQ(wisdom(), before);
}

}  // namespace
