// The direct kernel through its wrapper: laws of plane waves, and which samples a launch covers.
#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "device_test.h"

namespace {

using cpx = std::complex<double>;
using Direct = DeviceTest;

constexpr double kK0 = 2 * std::numbers::pi;  // lengths in wavelengths
constexpr double kD = 0.25;                   // dx, dy and dz

struct Scene {
  int nx, ny, nz;
  int blockSize = 16;
  bool is_TE = true;
  std::vector<double2> E, N;
  std::vector<double> F;

  // Field 1 on slice 0 and 0 behind it, index n everywhere.
  Scene(int nx_, int ny_, int nz_, double2 n) : nx(nx_), ny(ny_), nz(nz_) {
    const auto plane = static_cast<std::size_t>(nx * ny);
    E.resize(plane * static_cast<std::size_t>(nz));
    std::fill_n(E.begin(), plane, double2{1, 0});
    F.resize(E.size());
    N.assign(E.size(), n);
  }

  static std::vector<double> positions(int count) {
    std::vector<double> X;
    for (int i = 0; i < count; ++i) X.push_back((i - count / 2) * kD);
    return X;
  }
  static std::vector<double2> frequencies(int count) {
    std::vector<double2> K;
    for (int p = 0; p < count; ++p)
      K.push_back({2 * std::numbers::pi * (p < (count + 1) / 2 ? p : p - count) / (count * kD), 0});
    return K;
  }

  // Propagates and gives the error that is left.
  cudaError_t propagate() {
    const DeviceArray<double2> d_E(E), d_N(N), d_KX(frequencies(nx)), d_KY(frequencies(ny));
    const DeviceArray<double> d_F(F), d_X(positions(nx)), d_Y(positions(ny));
    naiveKernelWrapper_3D(d_E, d_F, d_N, d_KX, d_X, d_KY, d_Y, kK0, kD, kD, kD, nz, ny, nx,
                          blockSize, true, false, is_TE);
    cudaDeviceSynchronize();
    const cudaError_t status = cudaGetLastError();
    E = d_E.download();
    F = d_F.download();
    return status;
  }

  std::size_t at(int k, int j, int i) const {
    return static_cast<std::size_t>((k * ny + j) * nx + i);
  }
  cpx field(int k, int j, int i) const { return {E[at(k, j, i)].x, E[at(k, j, i)].y}; }
};

// Beer and Lambert: straight on in n + i*kappa a wave loses exp(-k0*kappa*dz) a slice.
TEST_F(Direct, AbsorbsExponentially) {
  Scene scene(8, 8, 6, {1.5, 0.02});
  ASSERT_EQ(scene.propagate(), cudaSuccess);
  for (int k = 0; k < scene.nz; ++k) {
    const cpx expected = std::exp(cpx(0, 1) * cpx(1.5, 0.02) * kK0 * kD * double(k));
    EXPECT_LE(std::abs(scene.field(k, 3, 5) - expected), 1e-13) << k;  // round-off of k steps
  }
}

// Straight on, the wavenumber is k0*n without a root, also where the root would be 0/0.
TEST_F(Direct, VerticalWaveCrossesIndexZero) {
  Scene scene(4, 4, 2, {0, 0});
  ASSERT_EQ(scene.propagate(), cudaSuccess);
  EXPECT_LE(std::abs(scene.field(1, 2, 1) - 1.0), 1e-15);
}

// A plane wave of the grid meets an index step: Fresnel's amplitude, the phase of the new medium.
TEST_F(Direct, RefractsAPlaneWaveOfTheGrid) {
  constexpr int n = 16, p = 2, q = 1;
  const double kx = Scene::frequencies(n)[p].x;
  const double ky = Scene::frequencies(n)[q].x;
  const double kz_i = std::sqrt(kK0 * kK0 - kx * kx - ky * ky);
  const double kz_t = std::sqrt(2.25 * kK0 * kK0 - kx * kx - ky * ky);
  for (const bool is_TE : {true, false}) {
    Scene scene(n, n, 2, {1, 0});
    scene.is_TE = is_TE;
    const std::vector<double> X = Scene::positions(n);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        const double phi = kx * X[std::size_t(i)] + ky * X[std::size_t(j)];
        scene.E[scene.at(0, j, i)] = {std::cos(phi), std::sin(phi)};
        scene.N[scene.at(1, j, i)] = {1.5, 0};
      }
    ASSERT_EQ(scene.propagate(), cudaSuccess);
    const double t = is_TE ? 2 * kz_i / (kz_i + kz_t) : 3 * kz_i / (2.25 * kz_i + kz_t);
    const double trimmed = std::floor(t * 1e4) * 1e-4;
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        const cpx expected = trimmed * scene.field(0, j, i) * std::polar(1.0, kz_t * kD);
        ASSERT_LE(std::abs(scene.field(1, j, i) - expected), 1e-13);
        ASSERT_NEAR(scene.F[scene.at(1, j, i)], trimmed * trimmed * kz_t, 1e-12);
      }
  }
}

// The threads are laid out for ny by nx and read as nx by ny: off the square some have no sample
// and some samples no thread. An impossible block leaves all samples alone.
TEST_F(Direct, CoversWhatTheLaunchReaches) {
  const int shapes[][2] = {{8, 8}, {6, 4}, {4, 6}, {40, 3}, {3, 40}, {33, 34}, {1, 5}};
  for (const auto& [nx, ny] : shapes)
    for (const int B : {-5, 0, 1, 5, 16, 32, 33, 1025}) {
      SCOPED_TRACE(::testing::Message() << nx << " x " << ny << ", block " << B);
      Scene scene(nx, ny, 2, {1, 0});
      scene.blockSize = B;
      const bool is_launched = B >= 1 && B * B <= 1024;
      const cudaError_t status = scene.propagate();
      ASSERT_EQ(status, is_launched ? cudaSuccess : cudaErrorInvalidConfiguration);
      for (int j = 0; j < ny; ++j)
        for (int i = 0; i < nx; ++i) {
          const bool is_covered =
              is_launched && i < (ny + B - 1) / B * B && j < (nx + B - 1) / B * B;
          ASSERT_EQ(std::abs(scene.field(1, j, i)) > 0.5, is_covered) << i << ' ' << j;
          ASSERT_EQ(scene.F[scene.at(1, j, i)] > 0.5, is_covered) << i << ' ' << j;
        }
    }
}

TEST_F(Direct, OneSliceStaysAsItIs) {
  Scene scene(4, 4, 1, {1, 0});
  scene.blockSize = 1025;  // nothing is launched, so nothing is refused
  ASSERT_EQ(scene.propagate(), cudaSuccess);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(scene.field(0, 0, i), cpx(1));
}

// The target slice is added to, and a spectrum below the threshold adds nothing.
TEST_F(Direct, AddsAndPrunes) {
  for (const auto& [amplitude, is_kept] : {std::pair{0.0001 / 16, true}, {0.00009 / 16, false}}) {
    Scene scene(4, 4, 2, {1, 0});
    std::fill_n(scene.E.begin(), 16, double2{amplitude, 0});
    std::fill_n(scene.E.begin() + 16, 16, double2{0, 7});
    std::fill_n(scene.F.begin() + 16, 16, 3.0);
    ASSERT_EQ(scene.propagate(), cudaSuccess);
    EXPECT_EQ(scene.field(1, 1, 2) != cpx(0, 7), is_kept);
    EXPECT_NEAR(scene.field(1, 1, 2).imag(), 7 + (is_kept ? amplitude : 0),
                1e-15);  // n*k0*dz = pi/2
    EXPECT_NEAR(scene.F[scene.at(1, 1, 2)], 3, 1e-8);
  }
}

}  // namespace
