// The shared-memory kernels against the same sum without threads, tiles or shared memory.
#include <cmath>
#include <complex>
#include <cstdlib>
#include <iostream>

#include "device_test.h"
#include "probes.h"

namespace {

using cpx = std::complex<double>;
using Line = DeviceTest;

constexpr double kK0 = 3.0;
constexpr double kDz = 0.2;

cpx c(double2 z) {
  return {z.x, z.y};
}

struct Lines {
  int nx, ny, nz, B;
  std::vector<double2> E, N, KX, S;
  std::vector<double> X;

  Lines(int nx_, int ny_, int nz_, int B_) : nx(nx_), ny(ny_), nz(nz_), B(B_) {
    E.assign(std::size_t(nx * ny * nz), {9, 9});
    for (int v = 0; v < nx * ny * nz; ++v)
      N.push_back({1.3 + 0.4 * std::sin(v), 0.05 * (1 + std::cos(v))});
    for (int m = 0; m < nx; ++m) {
      // Past 1.7*k0 nothing propagates; every fifth frequency is complex.
      KX.push_back({6.0 * (2 * m - nx) / nx, m % 5 == 0 ? 0.3 : 0.0});
      S.push_back({std::cos(3 * m), std::sin(2 * m)});
      X.push_back(10.0 * (m - nx / 2) / nx);
    }
  }

  cpx expected(bool is_TE, int k, int g) const {
    const cpx n_i = c(N[std::size_t(k * nx + g)]), n_t = c(N[std::size_t((k + 1) * nx + g)]);
    const double nk0_i = n_i.real() * kK0, nk0_t = n_t.real() * kK0;
    cpx sum = 0;
    for (std::size_t m = 0; m < std::size_t(nx / B * B); ++m) {
      const cpx K = c(KX[m]);
      const cpx kz_i = nk0_i * std::sqrt(cpx(1, 0) - K / nk0_i * (K / nk0_i));
      const cpx kz_t = nk0_t * std::sqrt(cpx(1, 0) - K / nk0_t * (K / nk0_t));
      if (kz_i.real() == 0 || !(kz_i.imag() < 1e-6)) continue;
      const cpx t = is_TE ? 2.0 * kz_i / (kz_i + kz_t)
                          : 2.0 * n_i * n_t * kz_i / (n_t * n_t * kz_i + n_i * n_i * kz_t);
      const cpx phi = kz_i * kDz + K * X[std::size_t(g)];
      sum += c(S[m]) / double(nx) * t * (m % 2 ? -1.0 : 1.0) * std::exp(-n_i.imag() * kK0 * kDz) *
             std::exp(cpx(0, 1) * phi);
    }
    return sum;
  }
};

// Tiles that fit, a partial tile, a line below the block, a block of 1, the largest block, threads
// beyond the volume. What idle threads reach is zero, the rest keeps its 9.
TEST_F(Line, IsThePlainSumWithZerosBehindIt) {
  const Lines cases[] = {{64, 2, 3, 16}, {100, 1, 2, 64}, {20, 3, 2, 32},
                         {5, 2, 2, 1},   {7, 1, 2, 1024}, {1024, 1, 2, 1024}};
  for (const Lines& lines : cases)
    for (const bool is_TE : {true, false}) {
      SCOPED_TRACE(::testing::Message() << lines.nx << " in blocks of " << lines.B);
      const int k = lines.nz - 2, first = (k + 1) * lines.nx, plane = lines.nx * lines.ny;
      const DeviceArray<double2> E(lines.E), N(lines.N), KX(lines.KX), S(lines.S);
      const DeviceArray<double> X(lines.X);
      ASSERT_EQ(
          probes::launch_line(is_TE, E, N, KX, S, X, kK0, kDz, lines.nx, lines.ny, k, lines.B),
          cudaSuccess);
      ASSERT_EQ(cudaDeviceSynchronize(), cudaSuccess);
      const std::vector<double2> result = E.download();
      const int threads = (plane + lines.B - 1) / lines.B * lines.B;
      for (int v = 0; v < plane * lines.nz; ++v) {
        const int g = v - first;
        const cpx expected = g < 0 || g >= threads ? cpx(9, 9)
                             : g >= lines.nx       ? cpx(0)
                                                   : lines.expected(is_TE, k, g);
        // nx terms of order 1, each to a few hundred ulp (the root next to grazing incidence)
        ASSERT_LE(std::abs(c(result[std::size_t(v)]) - expected), 1e-12) << g;
      }
    }
}

class Wrapper : public DeviceTest {
 protected:
  static std::vector<double2> run(const Lines& lines, int fresnel) {
    const DeviceArray<double2> E(lines.E), N(lines.N), KX(lines.KX);
    const DeviceArray<double> X(lines.X);
    shMemKernelWrapper_3D(E, N, KX, X, KX, X, kK0, kDz, lines.nz, lines.ny, lines.nx, lines.B,
                          fresnel);
    cudaDeviceSynchronize();
    return E.download();
  }
};

// The single-precision plan transforms nothing, and fresh memory of the stand-in reads as zero: the
// lines become sums over a spectrum of zeros. A GPU's fresh memory may hold anything.
TEST_F(Wrapper, LaunchesOneLineASlice) {
  if (!is_host_standin()) GTEST_SKIP() << "the spectrum is uninitialised memory";
  for (const int fresnel : {0, 1}) {
    const Lines lines(10, 3, 4, 4);
    const std::vector<double2> E = run(lines, fresnel);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    for (std::size_t v = 0; v < E.size(); ++v)  // 32 threads from 10, 20 and 30 on
      EXPECT_EQ(c(E[v]), v >= 10 && v < 62 ? cpx(0) : cpx(9, 9)) << v;
  }
}

TEST_F(Wrapper, RefusedLaunchesLeaveTheLines) {
  for (const int B : {-1, 0, 1025}) {
    Lines lines(10, 3, 3, B);
    for (const double2& e : run(lines, 0)) EXPECT_EQ(c(e), cpx(9, 9));
    EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidConfiguration);
  }
}

TEST_F(Wrapper, UnknownFresnelEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto ask = [] {
    std::cout.rdbuf(std::cerr.rdbuf());  // where a death test looks
    run(Lines(4, 4, 2, 4), 2);
  };
  EXPECT_EXIT(ask(), ::testing::ExitedWithCode(255), "^Error - Unknown Fresnel Coefficient 2\n$");
}

}  // namespace
