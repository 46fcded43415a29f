#include "wpm/screens.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "data/dataset.h"
#include "diagnostics.h"
#include "system/mix.h"
#include "wpm/sampled_field.h"

namespace {

// The part of begin..end that lies in -half..half, in units of its length.
double overlap(double begin, double end, double half) {
  return std::max(0.0, std::min(end, half) - std::max(begin, -half)) / (end - begin);
}

// The opening of a screen, seen from its middle; m.
struct Opening {
  double radius = 0;              // round, if above 0
  double half_x = 0, half_y = 0;  // rectangular otherwise; 0: all of that axis
  double dx = 0, dy = 0;          // of a sample

  [[nodiscard]] bool is_open(double x, double y) const {
    if (radius > 0) return x * x + y * y <= radius * radius;
    return (half_x == 0 || std::fabs(x) <= half_x) && (half_y == 0 || std::fabs(y) <= half_y);
  }
  // The open share of the sample around x, y.
  [[nodiscard]] double share(double x, double y) const;
};

double Opening::share(double x, double y) const {
  if (radius <= 0) {
    const double in_x = half_x == 0 ? 1.0 : overlap(x - dx / 2, x + dx / 2, half_x);
    const double in_y = half_y == 0 ? 1.0 : overlap(y - dy / 2, y + dy / 2, half_y);
    return in_x * in_y;
  }
  const double reach = std::hypot(dx, dy) / 2;
  const double rho = std::hypot(x, y);
  if (rho + reach <= radius) return 1.0;
  if (rho - reach >= radius) return 0.0;
  // Strips along x, each cut by its chord: good to some 1e-4 of the sample.
  constexpr int kStrips = 64;
  double sum = 0.0;
  for (int s = 0; s < kStrips; ++s) {
    const double v = y + ((s + 0.5) / kStrips - 0.5) * dy;
    const double chord = radius * radius - v * v;
    if (chord > 0) sum += overlap(x - dx / 2, x + dx / 2, std::sqrt(chord));
  }
  return sum / kStrips;
}

// The factors of one screen.
std::vector<cpx> factors_of(const struct_layer& l, const Grid& grid,
                            const std::string& configuration) {
  const double middle_x = (l.x + l.offsetx) * grid.metres;
  const double middle_y = (l.y + l.offsety) * grid.metres;
  if (!l.file.empty())
    return SampledField({configuration, l.file, l.dataset.empty() ? "/E" : l.dataset,
                         l.file_dx * grid.metres, l.file_dy * grid.metres, 0.0, l.line},
                        grid)
        .on(grid, middle_x, middle_y, l.transmission);
  const Opening opening = {std::fabs(l.r) * grid.metres, l.wx / 2 * grid.metres,
                           l.wy / 2 * grid.metres, grid.dx, grid.dy};
  // Nothing opened: a plate of its transmission throughout.
  const bool has_opening = l.r != 0 || l.wx != 0 || l.wy != 0;
  std::vector<cpx> factors(grid.plane(), l.transmission);
  for (int j = 0, s = 0; has_opening && j < grid.ny; ++j)
    for (int i = 0; i < grid.nx; ++i, ++s) {
      const double x = grid.x(i) - middle_x;
      const double y = grid.y(j) - middle_y;
      const double share =
          l.levels > 1
              ? static_cast<double>(nearest_level(opening.share(x, y), l.levels)) / l.levels
              : static_cast<double>(opening.is_open(x, y));
      factors[static_cast<std::size_t>(s)] = share + (1.0 - share) * l.transmission;
    }
  return factors;
}

}  // namespace

ScreenMask::ScreenMask(const Grid& grid, const std::vector<Screen>& screens,
                       const std::string& configuration)
    : ScreenMask(grid, Window::whole(grid), screens, configuration) {}

ScreenMask::ScreenMask(const Grid& grid, const Window& window, const std::vector<Screen>& screens,
                       const std::string& configuration) {
  for (const auto& [slice, screen] : screens) {
    if (slice < 0 || slice >= grid.nz)
      diagnostics::fail(data::place(configuration, screen.line) +
                        ": the screen lies behind the domain, at slice " + std::to_string(slice) +
                        " of " + std::to_string(grid.nz) + "; make the layers before it thinner");
    const std::vector<cpx> whole = factors_of(screen, grid, configuration);
    const auto begin = whole.begin() + std::ptrdiff_t{window.y_begin} * grid.nx;
    std::vector<cpx> factors(begin, begin + static_cast<std::ptrdiff_t>(plane_of(grid, window)));
    const auto [place, is_first] = factors_.try_emplace(slice, std::move(factors));
    if (is_first) continue;
    std::transform(factors.begin(), factors.end(), place->second.begin(), place->second.begin(),
                   std::multiplies<>());
  }
}

void ScreenMask::apply(int k, cpx* E) {
  const auto screen = factors_.find(k);
  if (screen == factors_.end()) return;
  for (const cpx& factor : screen->second) *E++ *= factor;
}
