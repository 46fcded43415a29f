// Beams in a domain with absorbing edges, and light after a hole.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/scene.h"
#include "wpm/edge.h"
#include "wpm/screens.h"

namespace {

constexpr double kLambda = 1e-6;

Grid grid_of(const Scene& scene, int nz) {
  Grid grid;
  grid.nx = scene.nx, grid.ny = scene.ny, grid.nz = nz;
  grid.dx = scene.dx, grid.dy = scene.dy, grid.dz = scene.dz;
  grid.metres = 1e-6;
  return grid;
}

// Steps between two slices; the second becomes the first again. A mask follows each step. Large
// amplitudes keep all plane waves above the cut.
void march(Scene& pair, int steps, FieldMask& mask) {
  const auto plane = static_cast<std::ptrdiff_t>(pair.index(1, 0, 0));
  mask.apply(0, pair.E.data());
  for (int k = 1; k <= steps; ++k) {
    pair.propagate_by(make_fast_stepper);
    mask.apply(k, pair.E.data() + plane);
    std::copy_n(pair.E.begin() + plane, plane, pair.E.begin());
  }
}

// A beam that spreads far beyond the domain fades on the axis as in free space. It has 0.00774
// after 80 um for a waist of 1.5 um: paraxially 1 / (1 + (z/zR)^2), and 0.007741 by the angular
// spectrum. Without edges the domain of 32 um is 28 % off.
TEST(Edges, SpreadingBeamFadesAsInFreeSpace) {
  struct Case {
    int n;
    double edge, dz, bound;
  };
  for (const Case& c :
       {Case{80, 8e-6, 1e-6, 0.02}, Case{50, 3e-6, 1e-6, 0.20}, Case{50, 3e-6, 0.625e-6, 0.20}}) {
    Scene pair(c.n, c.n, 2, 0.4e-6, 0.41e-6, c.dz, kLambda);
    pair.illuminate(
        [](double x, double y) { return 1e6 * std::exp(-(x * x + y * y) / (1.5e-6 * 1.5e-6)); });
    const int steps = static_cast<int>(std::lround(80e-6 / c.dz));
    EdgeMask edge(grid_of(pair, steps + 1), c.edge, kLambda);
    march(pair, steps, edge);
    const double intensity = std::norm(pair.at(0, pair.ny / 2, pair.nx / 2)) * 1e-12;
    EXPECT_NEAR(intensity / 0.00774, 1.0, c.bound) << c.n << " " << c.dz;
  }
}

// A beam of waist 4 wavelengths crosses the sides and would return to the middle, reflected or
// transmitted. The edge reports what it took of the rest. Its steepest part turns some into
// evanescent waves, which carry nothing.
TEST(Edges, LittleOfABeamComesBack) {
  struct Case {
    double angle, edge, bound;  // degrees, wavelengths
  };
  for (const Case& c : {Case{20, 6, 1e-3}, Case{45, 6, 1e-3}, Case{20, 3, 5e-3}}) {
    Scene pair(108, 1, 2, 0.4e-6, 1e-6, 1e-6, kLambda);
    const double tilt = c.angle * M_PI / 180;
    pair.illuminate([&](double x, double) {
      return 1e4 * std::exp(cpx(-x * x / 16e-12, pair.k0 * std::sin(tilt) * x));
    });
    const double launched = pair.power(0);
    const int steps = static_cast<int>(43.2e-6 / std::tan(tilt) / pair.dz);
    EdgeMask edge(grid_of(pair, steps + 1), c.edge * kLambda, kLambda);
    march(pair, steps, edge);
    EXPECT_LE(pair.power(0) / launched, c.bound) << c.angle << " degrees, " << c.edge;
    const double taken = edge.taken() / (pair.dx * pair.dy);
    EXPECT_NEAR((taken + pair.power(0)) / launched, 0.99, 0.01 + 1e-6);
  }
}

// After a hole of radius a the axis has |exp(ikz) - z/R exp(ikR)|^2, R^2 = z^2 + a^2. This is the
// first Rayleigh-Sommerfeld integral, elementary there (Goodman, Introduction to Fourier Optics,
// 3.5). The radius is 10 wavelengths. Rim samples are open by their area, which dims light that the
// rim bends by 16 degrees by 1 %.
TEST(Edges, RoundHoleLightsItsAxis) {
  struct Case {
    double z;
    int steps;
  };
  for (const Case& c : {Case{33.5, 20}, Case{90, 45}}) {
    Scene pair(120, 120, 2, 0.3e-6, 0.32e-6, c.z * 1e-6 / c.steps, kLambda);
    pair.illuminate([](double, double) { return 1e4; });
    const Grid grid = grid_of(pair, c.steps + 1);
    struct_layer hole;
    hole.t = SCREEN;
    hole.r = 10, hole.levels = 16;
    ScreenMask screen(grid, {{0, hole}}, "");
    screen.apply(0, pair.E.data());
    EdgeMask edge(grid, 6e-6, kLambda);
    march(pair, c.steps, edge);
    const double R = std::hypot(c.z, 10);
    const cpx U = std::exp(cpx(0, 2 * M_PI * c.z)) - c.z / R * std::exp(cpx(0, 2 * M_PI * R));
    EXPECT_NEAR(std::norm(pair.at(0, 60, 60)) * 1e-8 / std::norm(U), 1.0, 0.02) << c.z;
  }
}

}  // namespace
