// Optics of components that cut voxels, are graded, or are side by side.
#include <gtest/gtest.h>

#include <cmath>

#include "support/scene.h"
#include "system/index_stack.h"

namespace {

// Micrometres; wavelength 1.
Scene scene_of(int nx, int ny, int nz, double dx, double dz,
               const std::vector<struct_layer>& layers) {
  struct_sysOptions so;
  so.nx = nx, so.ny = ny, so.nz = nz;
  so.f = 1e-6, so.dx = so.dy = dx, so.dz = dz;
  const IndexStack stack(so, layers, true);
  Scene scene(nx, ny, nz, dx * 1e-6, dx * 1e-6, dz * 1e-6, 1e-6);
  stack.paint(scene.N.data(), stack.whole());
  return scene;
}

// The share of slice k's light that is in a mode, a function of x and y.
double coupling(const Scene& scene, int k, const std::function<cpx(double, double)>& mode) {
  cpx overlap = 0.0;
  double power = 0.0;
  for (int j = 0; j < scene.ny; ++j)
    for (int i = 0; i < scene.nx; ++i) {
      const cpx m = mode(scene.X[std::size_t(i)] * 1e6, scene.Y[std::size_t(j)] * 1e6);
      overlap += std::conj(m) * scene.at(k, j, i);
      power += std::norm(m);
    }
  return std::norm(overlap) / power / scene.power(k);
}

// A Gaussian beam with its waist at a distance (Saleh & Teich 3.1-7).
auto focused_beam(double waist, double distance) {
  const double rayleigh = M_PI * waist * waist;
  const double w = waist * std::hypot(1, distance / rayleigh);
  const double curvature = distance * (1 + rayleigh * rayleigh / (distance * distance));
  return [=](double x, double y) {
    return std::exp(-(x * x + y * y) * cpx(1 / (w * w), M_PI / curvature));
  };
}

// A beam of waist 5 after a lens of radius 20, index 1.5, couples into a beam of waist 2.2, 30.4
// on. This is the best beam of a lens of 64 levels in slices of 0.05, at 0.998. Stairs are up to
// half a slice too high or low, (n - 1) dz/2 of path, uniform over the slice. The root mean square
// is 2 pi 0.5 dz/sqrt(12) = 0.73 at dz 0.8. exp(-0.73^2) = 0.59 stays with the beam, and 0.88 at
// half as much. The bright middle has few stairs, so the share is larger. Eight levels leave an
// eighth of that error.
TEST(Levels, MakeALensOfThickSlicesFocus) {
  const auto coupled = [](double dz, int levels) {
    const struct_layer lens = {.t = LENS, .z = 4, .r = 20, .n = 1.5, .ne = 1, .levels = levels};
    const int nz = static_cast<int>(std::ceil(4 / dz)) + 2;
    Scene scene = scene_of(96, 96, nz, 0.375, dz, {lens, {.z = 9, .n = 1}});
    scene.illuminate([](double x, double y) { return 1e3 * std::exp(-(x * x + y * y) / 25e-12); });
    scene.propagate_by(make_fast_stepper);
    return coupling(scene, nz - 1, focused_beam(2.2, 30.4));
  };
  EXPECT_NEAR(coupled(0.8, 0), 0.998 * std::exp(-std::pow(2 * M_PI * 0.4, 2) / 12), 0.12);
  EXPECT_NEAR(coupled(0.4, 0), 0.998 * std::exp(-std::pow(2 * M_PI * 0.2, 2) / 12), 0.05);
  EXPECT_NEAR(coupled(0.8, 8), 0.998, 0.015);
  EXPECT_NEAR(coupled(0.4, 8), 0.998, 0.005);
}

// Two round cores side by side: the light of one is in the other after pi/(2 C). This is half the
// beat length of the pair's two modes (Snyder & Love, Optical Waveguide Theory, 29-13):
// C = sqrt(2 Delta)/r U^2/V^3 K0(W d/r)/K1(W)^2.
// The theory needs cores far apart: at 2.5 radii it is good to some per cent.
TEST(Coupler, ExchangesItsPowerOverHalfABeat) {
  constexpr double kCore = 1.47, kCladding = 1.45, kRadius = 1.2, kApart = 3, kSpacing = 0.25;
  const double V = 2 * M_PI * kRadius * std::sqrt(kCore * kCore - kCladding * kCladding);
  const auto w_of = [V](double U) { return std::sqrt(V * V - U * U); };
  double low = 1e-6, high = V - 1e-6;  // U J1/J0 = W K1/K0, the fundamental mode
  while (high - low > 1e-14) {
    const double U = (low + high) / 2, W = w_of(U);
    const double difference = U * std::cyl_bessel_j(1, U) / std::cyl_bessel_j(0, U) -
                              W * std::cyl_bessel_k(1, W) / std::cyl_bessel_k(0, W);
    (difference > 0 ? high : low) = U;
  }
  const double U = low, W = w_of(U);
  const double exchange =
      M_PI / 2 * kRadius * V * V * V / (U * U) * std::pow(std::cyl_bessel_k(1, W), 2) /
      std::cyl_bessel_k(0, W * kApart / kRadius) / std::sqrt(1 - std::pow(kCladding / kCore, 2));
  ASSERT_NEAR(exchange, 182.1, 0.1);

  struct_layer left = {.t = WGUIDE, .r = kRadius, .n = kCore, .levels = 16, .over = true};
  left.offsetx = -kApart / 2;
  struct_layer right = left;
  right.offsetx = kApart / 2;
  const int nz = static_cast<int>(1.2 * exchange / kSpacing);
  Scene scene = scene_of(48, 48, nz, kSpacing, kSpacing, {{.z = 1e4, .n = kCladding}, left, right});
  const auto mode_at = [=](double centre) {
    return [=](double x, double y) -> cpx {
      const double rho = std::hypot(x - centre, y) / kRadius;
      return rho < 1 ? std::cyl_bessel_j(0, U * rho) / std::cyl_bessel_j(0, U)
                     : std::cyl_bessel_k(0, W * rho) / std::cyl_bessel_k(0, W);
    };
  };
  const auto launched = mode_at(-kApart / 2);
  scene.illuminate([&](double x, double y) { return 1e3 * launched(x * 1e6, y * 1e6); });
  scene.propagate_by(make_fast_stepper);
  double best = 0.0, place = 0.0;
  for (int k = 0; k < nz; k += 4) {
    const double crossed = coupling(scene, k, mode_at(kApart / 2));
    if (crossed > best) best = crossed, place = k * kSpacing;
  }
  EXPECT_NEAR(place / exchange, 1, 0.05);
  EXPECT_GT(best, 0.97);
  EXPECT_LT(coupling(scene, 0, mode_at(kApart / 2)), 0.1);
  EXPECT_NEAR(coupling(scene, int(exchange / 2 / kSpacing), launched), 0.5, 0.1);
}

// After a quarter of its pitch, pi/(2 g), a rod turns a beam of waist W into one of 1/(pi n g W).
// This is parabolic, to second order in the angle. The next order moves the focus closer by some (g
// W)^2/4 of the way, and leaves a twentieth beside it.
TEST(Grin, FocusesAfterAQuarterPitch) {
  constexpr double kGradient = 0.04, kWaist = 4, kStep = 0.25;
  const struct_layer rod = {.t = GRIN, .z = 100, .r = 7, .n = 1.5, .ne = 1.44, .g = kGradient};
  const double quarter = M_PI / (2 * kGradient);
  Scene scene = scene_of(64, 64, int(1.2 * quarter / kStep), 0.25, kStep, {rod});
  scene.illuminate([](double x, double y) { return 1e3 * std::exp(-(x * x + y * y) / 16e-12); });
  scene.propagate_by(make_fast_stepper);
  double best = 0.0, place = 0.0;
  for (int k = 0; k < scene.nz; ++k) {
    const double here = std::norm(scene.at(k, 32, 32)) / 1e6;
    if (here > best) best = here, place = k * kStep;
  }
  EXPECT_NEAR(place / quarter, 1, 0.015);
  EXPECT_NEAR(best, std::pow(kWaist * M_PI * 1.5 * kGradient * kWaist, 2), 0.1 * best);
}

// Bars of half a period shift the phase by half a turn. Odd orders have (2/(pi m))^2 and even ones
// nothing (Goodman, Introduction to Fourier Optics, 4.4). One slice is a thin element to the bit.
TEST(EqualBars, SendNothingIntoEvenOrders) {
  const auto orders = [](int periods) {
    const struct_layer bars = {
        .t = GRATING, .z = 1, .px = 128.0 / periods, .n = 1.5, .ne = 1, .duty = 0.5};
    Scene scene = scene_of(512, 1, 2, 0.25, 1, {{.z = 0.5, .n = 1}, bars});
    scene.pol = NA;
    scene.propagate();
    std::vector<double> efficiencies;
    for (int m = 0; m <= 4; ++m) {
      cpx sum = 0.0;
      for (int i = 0; i < 512; ++i)
        sum += scene.at(1, 0, i) * std::polar(1.0, -2 * M_PI * periods * m * i / 512);
      efficiencies.push_back(std::norm(sum / 512.0));
    }
    return efficiencies;
  };
  // Samples represent their cells: (pi m/samples)^2/3 too much. Two pi is cut at 6.2831853.
  const std::vector<double> whole = orders(4);
  EXPECT_NEAR(whole[1], 0.405285 * (1 + std::pow(M_PI / 128, 2) / 3), 1e-6);
  EXPECT_NEAR(whole[3], 0.045032 * (1 + std::pow(3 * M_PI / 128, 2) / 3), 2e-6);
  for (const std::size_t even : {0, 2, 4}) EXPECT_LE(whole[even], 1e-15) << even;

  // 102.4 samples have no whole bars. Each edge cuts a sample, whose phase is between: on average
  // 2/pi of a sample that shifts by a quarter turn.
  const std::vector<double> cut = orders(5);
  EXPECT_NEAR(cut[1], 0.405285, 2e-4);
  EXPECT_NEAR(cut[3], 0.045032, 2e-4);
  const double leak = std::pow(2 * (2 / M_PI) / 102.4, 2);
  for (const std::size_t even : {0, 2, 4}) EXPECT_NEAR(cut[even], leak, 0.1 * leak) << even;
}

}  // namespace
