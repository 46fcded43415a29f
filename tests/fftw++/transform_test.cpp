#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fftw++.h"
#include "support/errors.h"

namespace {

using fftwpp::fft2d;
using Slice = std::vector<Complex>;

// Numbers without any symmetry, within the unit circle.
Slice sample(std::size_t count) {
  Slice slice;
  for (double i = 0; i < double(count); ++i) slice.push_back(std::polar(std::sin(i), i * i));
  return slice;
}

// The definition for nx rows of ny samples:
// out(p, q) = sum of in(i, j) exp(sign 2 pi i (pi/nx + qj/ny)).
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

// Up to 64 terms of about one, each exact to a few roundings of its angle of up to 50 turns.
constexpr double kBound = 1e-12;

TEST(Transform, PlanAndCallMustAgreeOnThePlace) {
  Slice in(16), out(16);
  EXPECT_TRUE(ends_in_error(
      [&] { fft2d(4, 4, -1, in.data(), out.data()).fft(in.data(), nullptr); },
      "^ERROR: fft constructor and call must be both in place or both out of place$", 1));
}

// A multiple of 8 and not of 16: a warning per array, and the transform is carried out.
TEST(Transform, MisalignedArraysDrawAWarning) {
  const Slice in = sample(16);
  Slice storage(34);
  auto* shifted = reinterpret_cast<Complex*>(reinterpret_cast<double*>(storage.data()) + 1);
  const Messages messages;
  fft2d plan(4, 4, -1, shifted, shifted + 16);
  std::copy(in.begin(), in.end(), shifted);
  plan.fft(shifted, shifted + 16);
  const std::string& text = messages.text();
  EXPECT_EQ(std::ranges::count(text, '\n'), 4) << text;
  EXPECT_TRUE(text.starts_with(
      "zerith: warning: constructor input array is not 16-byte aligned: address 0x"));
  EXPECT_LE(distance(Slice(shifted + 16, shifted + 32), definition(in, 4, 4, -1)), kBound);
}

// A plan of more threads is tried only on request, here for one of the signs.
TEST(Transform, IsTheDefinition) {
  EXPECT_EQ(fftwpp::fftw::testseconds, 0.1);
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
      // The inverse transform. The normalised one divides by the count.
      fft2d(nx, ny, -sign, nullptr, nullptr).fftNormalized(from.data(), from.data());
      EXPECT_LE(distance(from, in), kBound) << nx << " x " << ny;
    }
  fftwpp::fftw::testseconds = 0.1;
  fftwpp::fftw::maxthreads = 1;
}

// FFTW aborts when its memory runs out. The error names the work. Other aborts have no error.
class Aborting : public fftwpp::fftw {
 public:
  Aborting() : fftw(2 * 12, -1) { Setup(nullptr, nullptr); }

 protected:
  fftw_plan Plan(Complex*, Complex*) override { std::abort(); }
};

TEST(TransformDeath, AbortsAreExplained) {
  EXPECT_EXIT(Aborting(), testing::ExitedWithCode(1),
              "zerith: error: the transform library gave up while planning a transform of 12 ");
  Slice out(16);
  const fft2d transform(4, 4, -1, nullptr, out.data());
  EXPECT_EXIT(std::abort(), testing::KilledBySignal(SIGABRT), "^$");
}

// Counts the transforms that planning n x n numbers carries out.
class Counting : public fftwpp::fftw {
 public:
  static int transforms_of(unsigned n) {
    count = 0;
    Slice out(n * n);
    const Counting counting(n, out.data());
    return count;
  }

 protected:
  Counting(unsigned n, Complex* out) : fftw(2 * n * n, -1), n_(static_cast<int>(n)) {
    Setup(nullptr, out);
  }
  fftw_plan Plan(Complex* in, Complex* out) override {
    return fftw_plan_dft_2d(n_, n_, reinterpret_cast<fftw_complex*>(in),
                            reinterpret_cast<fftw_complex*>(out), sign, FFTW_ESTIMATE);
  }
  void Execute(Complex* in, Complex* out, bool shift) override {
    ++count;
    fftw::Execute(in, out, shift);
  }

 private:
  static int count;
  int n_;
};
int Counting::count = 0;

// One thread has no trial. A trial has at most as many transforms as its time has microseconds, and
// as many again on more threads.
TEST(Transform, ATrialOfThreadsIsShort) {
  EXPECT_EQ(fftwpp::fftw::maxthreads, 1U);
  EXPECT_EQ(Counting::transforms_of(8), 0);
  fftwpp::fftw::maxthreads = 2;
  fftwpp::fftw::testseconds = 50e-6;
  const int count = Counting::transforms_of(8);
  EXPECT_LE(2, count);
  EXPECT_LE(count, 49 + 50);
  fftwpp::fftw::maxthreads = 2;      // the trial has reduced it
  fftwpp::fftw::testseconds = 1e-6;  // none on one thread, and one on two
  EXPECT_EQ(Counting::transforms_of(8), 1);
  fftwpp::fftw::maxthreads = 1;
  fftwpp::fftw::testseconds = 0.1;
}

TEST(AlignedStorage, IsClearedAndFailsWithAMessage) {
  Complex* v = nullptr;
  Array::newAlign(v, 5, 64);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(v) % 64, 0U);
  EXPECT_EQ(Slice(v, v + 5), Slice(5));
  Array::deleteAlign(v);
#ifndef __SANITIZE_ADDRESS__  // its allocator ends the process
  EXPECT_TRUE(ends_in_error([&] { Array::newAlign(v, std::size_t{1} << 58U, 16); },
                            "^ERROR: Memory limits exceeded\\.$", 1));
#endif
}

}  // namespace
