#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <sstream>
#include <vector>

#include "fftw++.h"

namespace {

using fftwpp::fft2d;
using Slice = std::vector<Complex>;

Slice random_slice(std::size_t count) {
  std::mt19937 bits(7);
  std::uniform_real_distribution<double> part(-0.5, 0.5);
  Slice slice(count);
  for (Complex& z : slice) z = {part(bits), part(bits)};
  return slice;
}

// The definition: nx rows of ny samples, out(p, q) = sum of in(i, j) exp(sign 2 pi i (pi/nx +
// qj/ny)).
Slice definition(const Slice& in, unsigned nx, unsigned ny, int sign) {
  Slice out(in.size());
  for (unsigned p = 0; p < nx; ++p)
    for (unsigned q = 0; q < ny; ++q)
      for (unsigned i = 0; i < nx; ++i)
        for (unsigned j = 0; j < ny; ++j)
          out[p * ny + q] +=
              in[i * ny + j] *
              std::polar(1.0, sign * 2 * M_PI * (double(p * i) / nx + double(q * j) / ny));
  return out;
}

double distance(const Slice& a, const Slice& b) {
  double largest = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double here = std::abs(a[i] - b[i]);
    if (!(here <= largest)) largest = here;
  }
  return largest;
}

// Up to 64 terms of about one, each good to a few roundings of its angle of up to 50 turns.
constexpr double kBound = 1e-12;

TEST(Transform, IsTheDefinition) {
  for (const auto& [nx, ny] : {std::pair(1U, 1U), {4U, 4U}, {3U, 5U}, {8U, 2U}, {1U, 7U}, {8U, 8U}})
    for (const int sign : {-1, 1}) {
      const Slice in = random_slice(nx * ny);
      const Slice expected = definition(in, nx, ny, sign);
      Slice from = in, out(in.size());
      fft2d plan(nx, ny, sign, nullptr, out.data());
      plan.fft(from.data(), out.data());
      EXPECT_LE(distance(out, expected), kBound) << nx << " x " << ny;
      EXPECT_EQ(from, in);
      fft2d in_place(nx, ny, sign, nullptr, nullptr);
      in_place.fft(from.data(), nullptr);
      EXPECT_LE(distance(from, expected), kBound) << nx << " x " << ny;
      // Back again; the normalised transform is the one that divides by the count.
      fft2d(nx, ny, -sign, nullptr, nullptr).fftNormalized(from.data(), from.data());
      EXPECT_LE(distance(from, in), kBound) << nx << " x " << ny;
    }
}

TEST(Transform, PlanAndCallMustAgreeOnThePlace) {
  Slice in(16), out(16);
  for (Complex* plan_out : {in.data(), out.data()})
    EXPECT_EXIT(fft2d(4, 4, -1, in.data(), plan_out)
                    .fft(in.data(), plan_out == in.data() ? out.data() : nullptr),
                testing::ExitedWithCode(1),
                "ERROR: fft constructor and call must be both in place or both out of place");
}

TEST(Transform, EmptyExtentHasNoPlan) {
  EXPECT_EXIT(fft2d(0, 4, -1, nullptr, nullptr), testing::ExitedWithCode(1),
              "zerith: Unable to construct FFTW plan");
}

// A multiple of 8 and not of 16: a warning for each array, and the transform is carried out.
TEST(Transform, MisalignedArraysDrawAWarning) {
  const Slice in = random_slice(16);
  Slice storage(34);
  auto* shifted = reinterpret_cast<Complex*>(reinterpret_cast<double*>(storage.data()) + 1);
  std::ostringstream expected;
  for (const char* use : {"constructor ", ""})
    for (const auto& [name, address] : {std::pair("input", shifted), {"output", shifted + 16}})
      expected << "zerith: WARNING: " << use << name << " array is not 16-byte aligned: address "
               << address << std::endl;
  testing::internal::CaptureStderr();
  fft2d plan(4, 4, -1, shifted, shifted + 16);
  std::copy(in.begin(), in.end(), shifted);
  plan.fft(shifted, shifted + 16);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), expected.str());
  EXPECT_LE(distance(Slice(shifted + 16, shifted + 32), definition(in, 4, 4, -1)), kBound);
}

// A plan of more threads is tried only when asked for, and need not win.
TEST(Transform, ThreadTrialKeepsAPlanThatWorks) {
  const int before = omp_get_max_threads();
  const Slice in = random_slice(64);
  for (const int available : {1, 2}) {
    omp_set_num_threads(available);
    fftwpp::fftw::maxthreads = 2;
    fftwpp::fftw::testseconds = 0.001;
    Slice from = in, out(64);
    fft2d plan(8, 8, -1, nullptr, out.data());
    EXPECT_EQ(fftwpp::fftw::maxthreads, static_cast<unsigned>(available));
    EXPECT_LE(plan.plan_threads(), static_cast<unsigned>(available));
    plan.fft(from.data(), out.data());
    EXPECT_LE(distance(out, definition(in, 8, 8, -1)), kBound);
  }
  fftwpp::fftw::maxthreads = 1;
  fftwpp::fftw::testseconds = 0.1;
  omp_set_num_threads(before);
}

TEST(AlignedStorage, IsClearedAndFailsWithAMessage) {
  Complex* v = nullptr;
  Array::newAlign(v, 5, 64);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(v) % 64, 0U);
  EXPECT_EQ(Slice(v, v + 5), Slice(5));
  Array::deleteAlign(v);
#ifndef __SANITIZE_ADDRESS__  // whose allocator ends the process itself
  EXPECT_EXIT(Array::newAlign(v, 1, 24), testing::ExitedWithCode(1),
              "ERROR: Invalid alignment requested\\.");
  EXPECT_EXIT(Array::newAlign(v, std::size_t{1} << 58U, 16), testing::ExitedWithCode(1),
              "ERROR: Memory limits exceeded\\.");
#endif
}

}  // namespace
