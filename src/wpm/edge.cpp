#include "wpm/edge.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "diagnostics.h"
#include "ranks/ranks.h"

namespace {

constexpr double kPole = 1.3;  // in widths from the inner border

// The integral of (u / (c - u))^2 over u from 0 to 1.
double integral_of_rise() {
  return kPole / (kPole - 1) - 2 * kPole * std::log(kPole / (kPole - 1)) + 1;
}

// Factors of the n samples of an axis. The sides lie half an extent from the middle, where the
// periodic domain joins itself.
std::vector<double> factors_of(int n, double spacing, double dz, double width, double wavelength) {
  std::vector<double> factor(static_cast<std::size_t>(std::max(n, 0)), 1.0);
  if (n <= 1) return factor;
  const int middle = n / 2;
  for (int i = 0; i < n; ++i) {
    const double to_side = 0.5 * n * spacing - std::fabs((i - middle) * spacing);
    factor[static_cast<std::size_t>(i)] =
        std::exp(-edge_absorption(width - to_side, width, wavelength) * dz);
  }
  return factor;
}

bool fits(int n, double spacing, double width) {
  return n <= 1 || 2 * width <= n * spacing * (1 + 1e-12);
}

}  // namespace

double edge_absorption(double depth, double width, double wavelength) {
  if (depth <= 0.0) return 0.0;
  const double u = depth / width;
  const double rise = u / (kPole - u);
  const double strength = std::clamp(1.5 + width / (3 * wavelength), 2.0, 5.0);
  return strength / width * (rise * rise / integral_of_rise());
}

EdgeMask::EdgeMask(const Grid& grid, double width, double wavelength)
    : EdgeMask(grid, Window::whole(grid), width, wavelength) {}

EdgeMask::EdgeMask(const Grid& grid, const Window& window, double width, double wavelength)
    : factor_x_(factors_of(grid.nx, grid.dx, grid.dz, width, wavelength)),
      factor_y_(factors_of(grid.ny, grid.dy, grid.dz, width, wavelength)),
      area_(grid.dx * grid.dy) {
  if (!fits(grid.nx, grid.dx, width) || !fits(grid.ny, grid.dy, width))
    diagnostics::fail("edge is wider than half the domain; make it smaller, or x and y larger");
  const std::vector<double> all = std::move(factor_y_);
  factor_y_.assign(all.begin() + window.y_begin,
                   all.begin() + std::max(window.y_begin, window.y_end));
}

void EdgeMask::apply(int k, cpx* E) {
  if (!covers(k)) return;
  double taken = 0.0;
  for (const double factor_y : factor_y_)
    for (const double factor_x : factor_x_) {
      const double factor = factor_x * factor_y;
      if (factor != 1.0) {
        taken += std::norm(*E) * (1.0 - factor * factor);
        *E *= factor;
      }
      ++E;
    }
  add_taken(ranks::sum(taken));
}
