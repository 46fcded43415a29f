#include <algorithm>
#include <cmath>
#include <cstdio>

#include "measure.h"
#include "wpm/edge.h"

namespace bench {
namespace {

constexpr double kLambda = 1e-6;

// Steps the first of two slices on through an edge of this width; none if it is 0.
void march(Scene& pair, int steps, double width) {
  Grid grid;
  grid.nx = pair.nx, grid.ny = pair.ny, grid.nz = steps + 1;
  grid.dx = pair.dx, grid.dy = pair.dy, grid.dz = pair.dz;
  EdgeMask edge(grid, width > 0 ? width : pair.dx, kLambda);
  const auto plane = static_cast<std::ptrdiff_t>(pair.index(1, 0, 0));
  for (int k = 1; k <= steps; ++k) {
    pair.propagate_by(make_fast_stepper);
    if (width > 0) edge.apply(k, pair.E.data() + plane);
    std::copy_n(pair.E.begin() + plane, plane, pair.E.begin());
  }
}

// Share of a beam's power that is left when it would be back in the middle of a domain of 48
// wavelengths, having met its sides once.
double what_comes_back(double degrees, double width) {
  Scene pair(192, 1, 2, 0.25e-6, 1e-6, 0.25e-6, kLambda);
  const double tilt = degrees * M_PI / 180;
  pair.illuminate([&](double x, double) {
    return 1e6 * std::exp(cpx(-x * x / 16e-12, pair.k0 * std::sin(tilt) * x));
  });
  const double launched = pair.power(0);
  march(pair, static_cast<int>(48e-6 / std::tan(tilt) / pair.dz), width * kLambda);
  return pair.power(0) / launched;
}

// On-axis intensity behind 80 um of a beam of waist 1.5 um, over that of free space.
double spreading_beam(int n, double dz, double width) {
  Scene pair(n, n, 2, 0.4e-6, 0.4e-6, dz, kLambda);
  pair.illuminate([](double x, double y) { return 1e6 * std::exp(-(x * x + y * y) / 2.25e-12); });
  march(pair, static_cast<int>(std::lround(80e-6 / dz)), width);
  return std::norm(pair.at(0, n / 2, n / 2)) * 1e-12 / 0.00774;
}

}  // namespace

void edges() {
  std::printf(
      "what comes back of a beam of waist 4 wavelengths, by the angle that it meets the "
      "edge under\n%12s %10s %10s %10s %10s %10s\n",
      "width", "10 deg", "15 deg", "20 deg", "30 deg", "45 deg");
  for (const double width : {3.0, 4.0, 6.0, 8.0}) {
    std::printf("%8.0f wl.", width);
    for (const double degrees : {10, 15, 20, 30, 45})
      std::printf(" %10.1e", what_comes_back(degrees, width));
    std::printf("\n");
  }
  std::printf("\na beam of waist 1.5 um behind 80 um, intensity on its axis over free space's\n");
  std::printf("%10s %10s %10s %10s\n", "domain um", "edge um", "dz um", "ratio");
  for (const int n : {80, 50})
    for (const double width : {0.0, n == 80 ? 8e-6 : 3e-6})
      for (const double dz : {0.4e-6, 1e-6})
        std::printf("%10.0f %10.0f %10.1f %10.4f\n", 0.4 * n, width * 1e6, dz * 1e6,
                    spreading_beam(n, dz, width));
}

}  // namespace bench
