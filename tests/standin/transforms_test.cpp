// The transforms against the sum that defines them.
#include <fftw3.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <numbers>
#include <string>

#include "cufft.h"
#include "kernel/device_test.h"

namespace {

constexpr int kNx = 6, kNy = 5, kPlane = kNx * kNy, kBatch = 3;  // planes of kNx rows

std::vector<cpx> samples() {
  std::vector<cpx> values;
  for (int v = 0; v < kBatch * kPlane; ++v) values.emplace_back(std::sin(3 * v), std::cos(v * v));
  return values;
}

cpx dft(const cpx* plane, int direction, int row, int column) {
  cpx sum = 0;
  for (int v = 0; v < kPlane; ++v) {
    const double turns = double(row * (v / kNy)) / kNx + double(column * (v % kNy)) / kNy;
    sum += plane[v] * std::polar(1.0, direction * 2 * std::numbers::pi * turns);
  }
  return sum;
}

cufftResult plan_many(cufftHandle* plan, int nx, int batch, int distance) {
  int extents[] = {nx, kNy};
  return cufftPlanMany(plan, 2, extents, nullptr, 1, distance, nullptr, 1, distance, CUFFT_Z2Z,
                       batch);
}

std::string wisdom() {
  const std::unique_ptr<char, decltype(&std::free)> text(fftw_export_wisdom_to_string(), std::free);
  return text.get();
}

// One plane, after which nothing changes, and several. The wisdom file belongs to the CPU path.
TEST(StandinTransforms, AreTheUnnormalisedSumsAndLeaveNoWisdom) {
  fftw_init_threads();  // as the CPU path does first
  const DeviceArray<cpx> input(samples()), output(samples());
  cufftHandle single = 0, batched = 0;
  ASSERT_EQ(cufftPlan2d(&single, kNx, kNy, CUFFT_Z2Z), CUFFT_SUCCESS);
  ASSERT_EQ(plan_many(&batched, kNx, kBatch, kPlane), CUFFT_SUCCESS);
  const std::string wisdom_before = wisdom();
  for (const cufftHandle plan : {single, batched})
    for (const int direction : {CUFFT_FORWARD, CUFFT_INVERSE})
      for (const auto* target : {&output, &input}) {
        const std::vector<cpx> in = input.download(), before = target->download();
        ASSERT_EQ(cufftExecZ2Z(plan, input, *target, direction), CUFFT_SUCCESS);
        const std::vector<cpx> out = target->download();
        for (int v = 0; v < kBatch * kPlane; ++v) {
          const int place = v % kPlane;
          const cpx expected = plan == single && v >= kPlane
                                   ? before[v]
                                   : dft(&in[v - place], direction, place / kNy, place % kNy);
          ASSERT_LE(std::abs(out[v] - expected), 1e-10) << v;
        }
      }
  EXPECT_EQ(wisdom(), wisdom_before);
  for (const auto expected : {CUFFT_SUCCESS, CUFFT_INVALID_PLAN})
    EXPECT_EQ(cufftDestroy(batched), expected);
}

// The same in single precision, to its 24 bits.
TEST(StandinTransforms, SinglePrecisionIsTheSameSum) {
  const std::vector<cpx> in = samples();
  std::vector<std::complex<float>> single_in;
  for (const cpx& value : in) single_in.emplace_back(value);
  const DeviceArray<std::complex<float>> memory(single_in);
  int extents[] = {kNx, kNy};
  cufftHandle plan = 0;
  ASSERT_EQ(
      cufftPlanMany(&plan, 2, extents, nullptr, 1, kPlane, nullptr, 1, kPlane, CUFFT_C2C, kBatch),
      CUFFT_SUCCESS);
  ASSERT_EQ(cufftExecC2C(plan, memory, memory, CUFFT_INVERSE), CUFFT_SUCCESS);
  const auto out = memory.download();
  for (int v = 0; v < kBatch * kPlane; ++v) {
    const int place = v % kPlane;
    const cpx expected = dft(&in[v - place], CUFFT_INVERSE, place / kNy, place % kNy);
    ASSERT_LE(std::abs(cpx(out[v]) - expected), 1e-5) << v;
  }
  const DeviceArray<cpx> doubles(in);
  EXPECT_EQ(cufftExecZ2Z(plan, doubles, doubles, CUFFT_INVERSE), CUFFT_INVALID_TYPE);
}

TEST(StandinTransforms, RefuseWhatTheyCannotDo) {
  const DeviceArray<cpx> memory(samples());
  cufftHandle plan = 0;
  EXPECT_EQ(plan_many(&plan, 0, 1, 0), CUFFT_INVALID_SIZE);
  EXPECT_EQ(plan_many(&plan, kNx, 0, kPlane), CUFFT_INVALID_SIZE);
  EXPECT_EQ(plan_many(&plan, kNx, 2, kPlane + 1), CUFFT_INVALID_VALUE);
  EXPECT_EQ(cufftExecZ2Z(plan, memory, memory, CUFFT_FORWARD), CUFFT_INVALID_PLAN);
  ASSERT_EQ(plan_many(&plan, kNx, kBatch, kPlane), CUFFT_SUCCESS);
  EXPECT_EQ(cufftExecZ2Z(plan, memory, memory, 0), CUFFT_INVALID_VALUE);
  EXPECT_EQ(cudaGetLastError(), cudaSuccess);
  EXPECT_EQ(cufftExecZ2Z(plan, memory, memory + 1, CUFFT_FORWARD), CUFFT_EXEC_FAILED);
  EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress);
}

}  // namespace
