// A slab guide, the simplest structure whose index varies within a slice.
#include <gtest/gtest.h>

#include <cmath>

#include "support/scene.h"

namespace {

constexpr double kLambda = 1.55e-6;
constexpr double kCore = 1.50;
constexpr double kCladding = 1.45;
constexpr double kHalfWidth = 1e-6;

// The effective index of the fundamental TE mode of the symmetric slab: the root of
// kappa d/2 = atan(gamma/kappa) (Snyder & Love, Optical Waveguide Theory, 12-2); 1.48234 for 2 um
// of 1.50 in 1.45 at 1.55 um.
double effective_index() {
  const double k0 = 2 * M_PI / kLambda;
  double low = kCladding + 1e-9;
  double high = kCore - 1e-9;
  while (high - low > 1e-14) {
    const double n = (low + high) / 2;
    const double kappa = k0 * std::sqrt(kCore * kCore - n * n);
    const double gamma = k0 * std::sqrt(n * n - kCladding * kCladding);
    (kappa * kHalfWidth > std::atan(gamma / kappa) ? low : high) = n;
  }
  return low;
}

// The mode's field around the core's centre.
double mode_field(double x) {
  const double k0 = 2 * M_PI / kLambda;
  const double n = effective_index();
  const double kappa = k0 * std::sqrt(kCore * kCore - n * n);
  const double gamma = k0 * std::sqrt(n * n - kCladding * kCladding);
  const double u = std::fabs(x);
  return u <= kHalfWidth ? std::cos(kappa * u)
                         : std::cos(kappa * kHalfWidth) * std::exp(-gamma * (u - kHalfWidth));
}

// One row of samples. The core has whole samples: its edges are half way between two.
Scene slab_guide(int nx, double dx, int nz, double dz) {
  Scene scene(nx, 1, nz, dx, 1e-6, dz, kLambda);
  const double centre = -dx / 2;
  for (std::size_t s = 0; s < scene.N.size(); ++s) {
    const double x = scene.X[s % static_cast<std::size_t>(nx)] - centre;
    scene.N[s] = std::fabs(x) < kHalfWidth ? kCore : kCladding;
  }
  scene.illuminate([=](double x, double) { return 1e4 * mode_field(x - centre); });
  return scene;
}

// The overlap of slice k with the launched mode, over the mode's own power.
cpx overlap(const Scene& scene, int k) {
  cpx sum = 0.0;
  for (int i = 0; i < scene.nx; ++i) sum += std::conj(scene.at(0, 0, i)) * scene.at(k, 0, i);
  return sum / scene.power(0);
}

// Plane waves of the whole slice carry the local index, as if index and direction commuted. The
// error is about the index contrast times half the square of the mode's angle, 0.05 * (kappa/(n
// k0))^2 / 2 = 6e-4. 1.45 and 1.50 are much further away.
TEST(Guide, FundamentalModeTravelsWithItsIndex) {
  ASSERT_NEAR(effective_index(), 1.48234, 5e-6);
  Scene scene = slab_guide(128, 0.125e-6, 101, 0.1e-6);
  scene.propagate();
  double phase = 0.0;
  for (int k = 1; k < scene.nz; ++k) phase += std::arg(overlap(scene, k) / overlap(scene, k - 1));
  EXPECT_NEAR(phase / (scene.k0 * scene.dz * (scene.nz - 1)), effective_index(), 6e-4);
}

// The mode keeps its shape, but not exactly its power, for the same reason. The step of a slice
// with two indices is not unitary. The error per step is between the square of 6e-4 * k0 * dz and
// 6e-4 * k0 * dz: 6e-6 to 0.025 over these hundred steps.
TEST(Guide, FundamentalModeKeepsItsShapeAndNearlyItsPower) {
  Scene scene = slab_guide(128, 0.125e-6, 101, 0.1e-6);
  scene.propagate();
  const double power = scene.power(100) / scene.power(0);
  EXPECT_LE(std::fabs(power - 1.0), 0.025);
  EXPECT_GE(std::fabs(power - 1.0), 6e-6);
  EXPECT_GT(std::norm(overlap(scene, 100)) / power, 0.999);

  // Without the guide the same field spreads: each plane wave turns by kz. The overlap is the mean
  // of those turns over its spectrum, a quarter less than with the guide.
  Scene free = slab_guide(128, 0.125e-6, 101, 0.1e-6);
  free.fill(0, free.nz, kCladding);
  free.propagate();
  cpx turns = 0.0;
  double weight = 0.0;
  for (int m = -free.nx / 2; m < free.nx / 2; ++m) {
    cpx amplitude = 0.0;
    for (int i = 0; i < free.nx; ++i)
      amplitude += free.at(0, 0, i) *
                   std::polar(1.0, -free.frequency(m) * free.X[static_cast<std::size_t>(i)]);
    const double kz_sq = std::pow(kCladding * free.k0, 2) - std::pow(free.frequency(m), 2);
    turns += std::norm(amplitude) * std::exp(cpx(0, 100 * free.dz) * std::sqrt(cpx(kz_sq)));
    weight += std::norm(amplitude);
  }
  EXPECT_LE(std::abs(overlap(free, 100) - turns / weight), 1e-6);
  EXPECT_LT(std::norm(overlap(free, 100)), 0.78);
}

}  // namespace
