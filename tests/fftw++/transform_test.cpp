#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include "fftw++.h"

namespace {

using fftwpp::fft2d;
using Slice = std::vector<Complex>;

// Numbers without any symmetry, within the unit circle.
Slice sample(std::size_t count) {
  Slice slice;
  for (double i = 0; i < double(count); ++i) slice.push_back(std::polar(std::sin(i), i * i));
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
  double squares = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) squares += std::norm(a[i] - b[i]);
  return std::sqrt(squares);
}

// Up to 64 terms of about one, each good to a few roundings of its angle of up to 50 turns.
constexpr double kBound = 1e-12;

TEST(Transform, PlanAndCallMustAgreeOnThePlace) {
  Slice in(16), out(16);
  EXPECT_EXIT(fft2d(4, 4, -1, in.data(), out.data()).fft(in.data(), nullptr),
              testing::ExitedWithCode(1),
              "ERROR: fft constructor and call must be both in place or both out of place");
}

// A multiple of 8 and not of 16: a warning for each array, and the transform is carried out.
TEST(Transform, MisalignedArraysDrawAWarning) {
  const Slice in = sample(16);
  Slice storage(34);
  auto* shifted = reinterpret_cast<Complex*>(reinterpret_cast<double*>(storage.data()) + 1);
  testing::internal::CaptureStderr();
  fft2d plan(4, 4, -1, shifted, shifted + 16);
  std::copy(in.begin(), in.end(), shifted);
  plan.fft(shifted, shifted + 16);
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::ranges::count(text, '\n'), 4) << text;
  EXPECT_TRUE(text.starts_with(
      "zerith: WARNING: constructor input array is not 16-byte aligned: address 0x"));
  EXPECT_LE(distance(Slice(shifted + 16, shifted + 32), definition(in, 4, 4, -1)), kBound);
}

// A plan of more threads is tried only when asked for, as here for one of the signs.
TEST(Transform, IsTheDefinition) {
  fftwpp::fftw::testseconds = 0.001;
  for (const auto& [nx, ny] : {std::pair(1U, 1U), {4U, 4U}, {3U, 5U}, {8U, 2U}, {1U, 7U}, {8U, 8U}})
    for (const int sign : {1, -1}) {
      fftwpp::fftw::maxthreads = sign > 0 ? 2 : 1;
      const Slice in = sample(nx * ny);
      const Slice expected = definition(in, nx, ny, sign);
      Slice from = in, out(in.size());
      fft2d(nx, ny, sign, nullptr, out.data()).fft(from.data(), out.data());
      EXPECT_LE(distance(out, expected), kBound) << nx << " x " << ny;
      EXPECT_EQ(from, in);
      fft2d(nx, ny, sign, nullptr, nullptr).fft(from.data(), nullptr);
      EXPECT_LE(distance(from, expected), kBound) << nx << " x " << ny;
      // Back again; the normalised transform is the one that divides by the count.
      fft2d(nx, ny, -sign, nullptr, nullptr).fftNormalized(from.data(), from.data());
      EXPECT_LE(distance(from, in), kBound) << nx << " x " << ny;
    }
}

TEST(AlignedStorage, IsClearedAndFailsWithAMessage) {
  Complex* v = nullptr;
  Array::newAlign(v, 5, 64);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(v) % 64, 0U);
  EXPECT_EQ(Slice(v, v + 5), Slice(5));
  Array::deleteAlign(v);
#ifndef __SANITIZE_ADDRESS__  // whose allocator ends the process itself
  EXPECT_EXIT(Array::newAlign(v, std::size_t{1} << 58U, 16), testing::ExitedWithCode(1),
              "ERROR: Memory limits exceeded\\.");
#endif
}

}  // namespace
