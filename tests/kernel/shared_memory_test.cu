// The shared-memory kernels against the same sum without threads, tiles or shared memory.
#include <cmath>
#include <iostream>

#include "kernel/device_test.h"
#include "kernel/kernel.h"
#include "kernel/kernels.cuh"
#include "kernel/launch.h"
#include "support/errors.h"

namespace {

using SharedMemory = DeviceTest;

constexpr double kK0 = 3.0, kDz = 0.2;

struct Lines {
  int nx, ny, nz, B;
  std::vector<cpx> E, N, KX, S;
  std::vector<double> X;

  Lines(int nx_, int ny_, int nz_, int B_) : nx(nx_), ny(ny_), nz(nz_), B(B_) {
    E.assign(nx * ny * nz, {9, 9});
    for (int v = 0; v < nx * ny * nz; ++v)
      N.emplace_back(1.3 + 0.4 * std::sin(v), 0.05 * (1 + std::cos(v)));
    for (int m = 0; m < nx; ++m) {
      // Past 1.7*k0 nothing propagates; every fifth frequency is complex.
      KX.emplace_back(6.0 * (2 * m - nx) / nx, m % 5 == 0 ? 0.3 : 0.0);
      S.emplace_back(std::cos(3 * m), std::sin(2 * m));
      X.push_back(10.0 * (m - nx / 2) / nx);
    }
  }

  cpx expected(bool is_TE, int k, int g) const {
    const cpx n_i = N[k * nx + g], n_t = N[(k + 1) * nx + g];
    const auto kz = [](double nk0, cpx K) { return std::sqrt(cpx(nk0 * nk0, 0) - K * K); };
    cpx sum = 0;
    for (int m = 0; m < nx / B * B; ++m) {
      const cpx kz_i = kz(n_i.real() * kK0, KX[m]), kz_t = kz(n_t.real() * kK0, KX[m]);
      if (kz_i.real() == 0 || !(kz_i.imag() < 1e-6)) continue;
      const cpx t = is_TE ? 2.0 * kz_i / (kz_i + kz_t)
                          : 2.0 * n_i * n_t * kz_i / (n_t * n_t * kz_i + n_i * n_i * kz_t);
      sum += S[m] / double(nx) * t * (m % 2 ? -1.0 : 1.0) *
             std::exp(cpx(0, 1) * (kz_i * kDz + KX[m] * X[g]) - n_i.imag() * kK0 * kDz);
    }
    return sum;
  }
};

// Tiles that fit, a partial tile, a line below the block, a block of 1, the largest block, threads
// beyond the volume. Samples of idle threads are zero. The rest keeps its 9.
TEST_F(SharedMemory, KernelsArePlainSumsWithZerosBehindThem) {
  const Lines cases[] = {{64, 2, 3, 16}, {100, 1, 2, 64}, {20, 3, 2, 32},
                         {5, 2, 2, 1},   {7, 1, 2, 1024}, {1024, 1, 2, 1024}};
  for (const Lines& lines : cases)
    for (const bool is_TE : {true, false}) {
      const int k = lines.nz - 2, first = (k + 1) * lines.nx, plane = lines.nx * lines.ny;
      const int blocks = (plane + lines.B - 1) / lines.B;
      const DeviceArray<cpx> E(lines.E), N(lines.N), KX(lines.KX), S(lines.S);
      const DeviceArray<double> X(lines.X);
      // KY and Y are never read: any device pointer will do.
      ASSERT_EQ(device::launch(is_TE ? shMemKernelTE_3D : shMemKernelTM_3D, blocks, lines.B,
                               2 * lines.B * sizeof(double2), E, N, KX, KX, S, X, X, kK0, kDz,
                               lines.nx, lines.ny, k),
                cudaSuccess);
      const std::vector<cpx> result = E.download();
      for (int v = 0; v < plane * lines.nz; ++v) {
        const int g = v - first;
        const cpx expected = g < 0 || g >= blocks * lines.B ? cpx(9, 9)
                             : g >= lines.nx                ? cpx(0)
                                                            : lines.expected(is_TE, k, g);
        // nx terms of order 1, each to a few hundred ulp (the root next to grazing incidence)
        ASSERT_LE(std::abs(result[v] - expected), 1e-12) << lines.nx << ' ' << lines.B << ' ' << g;
      }
    }
}

std::vector<cpx> run_wrapper(const Lines& lines, int fresnel) {
  const DeviceArray<cpx> E(lines.E), N(lines.N), KX(lines.KX);
  const DeviceArray<double> X(lines.X);
  shMemKernelWrapper_3D(E, N, KX, X, KX, X, kK0, kDz, lines.nz, lines.ny, lines.nx, lines.B,
                        fresnel);
  return E.download();
}

// The single-precision plan transforms nothing. The stand-in's fresh memory reads as zero: the
// lines are sums over a spectrum of zeros. A GPU's fresh memory may have any values. A refused
// launch leaves the lines.
TEST_F(SharedMemory, WrapperLaunchesOneLineASlice) {
  for (const int fresnel : {0, 1})
    for (const int B : {-1, 0, 4, 1025}) {
      const bool is_launched = B == 4;
      if (is_launched && !is_host_standin()) continue;
      const std::vector<cpx> E = run_wrapper(Lines(10, 3, 4, B), fresnel);
      EXPECT_EQ(cudaGetLastError(), is_launched ? cudaSuccess : cudaErrorInvalidConfiguration);
      for (std::size_t v = 0; v < E.size(); ++v)  // 32 threads from 10, 20 and 30 on
        EXPECT_EQ(E[v], is_launched && v >= 10 && v < 62 ? cpx(0) : cpx(9, 9)) << B << ' ' << v;
    }
}

TEST_F(SharedMemory, WrapperRefusesAnUnknownFresnel) {
  testing::internal::CaptureStdout();
  EXPECT_ERROR(run_wrapper(Lines(4, 4, 2, 4), 2), "Fresnel coefficients 0 .* and 1 ");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error - Unknown Fresnel Coefficient 2\n");
}

}  // namespace
