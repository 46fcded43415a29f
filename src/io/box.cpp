#include "io/box.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "diagnostics.h"
#include "io/units.h"

namespace {

// One axis: positions from begin to end hold n samples, the one at `zero` lies at 0.
struct Line {
  std::string name;
  int n;
  double spacing, begin, end;  // in the file's unit
  int zero;
  std::string unit;

  [[nodiscard]] int nearest(const std::string& key, double value, const std::string& where) const {
    // Lengths in a file are decimal: an edge is met to round-off.
    const double slack = 1e-9 * (end - begin);
    if (!(value >= begin - slack && value <= end + slack))
      diagnostics::fail(where + ": " + key + " = " + in_words(value) +
                        " lies outside of the domain, " + in_words(begin) + " to " + in_words(end) +
                        " " + unit);
    if (!(spacing > 0)) return 0;
    const double sample = std::round(value / spacing) + zero;
    return static_cast<int>(std::clamp(sample, 0.0, n - 1.0));
  }

  [[nodiscard]] SampleRange range(const std::optional<double>& at, const std::optional<double>& low,
                                  const std::optional<double>& high,
                                  const std::string& where) const {
    if (at) return {nearest(name, *at, where), 1};
    const int first = low ? nearest(name + "1", *low, where) : 0;
    const int last = high ? nearest(name + "2", *high, where) : n - 1;
    return {first, std::max(last - first + 1, 0)};
  }
};

Line across(const std::string& name, int n, double spacing, const Grid& grid) {
  const double d = spacing / grid.metres;
  return {name, n, d, -0.5 * n * d, 0.5 * n * d, n / 2, length_unit(grid)};
}

Line along(const Grid& grid) {
  const double d = grid.dz / grid.metres;
  return {"z", grid.nz, d, 0.0, grid.nz * d, 0, length_unit(grid)};
}

}  // namespace

Box box_of(const Monitor& monitor, const Grid& grid, const std::string& where) {
  // For tables x and y are a centre.
  const bool is_field = monitor.type == MonitorType::kField;
  const auto at = [is_field](const std::optional<double>& place) {
    return is_field ? place : std::nullopt;
  };
  Box box;
  box.x = across("x", grid.nx, grid.dx, grid).range(at(monitor.x), monitor.x1, monitor.x2, where);
  box.y = across("y", grid.ny, grid.dy, grid).range(at(monitor.y), monitor.y1, monitor.y2, where);
  box.z = along(grid).range(monitor.z, monitor.z1, monitor.z2, where);
  box.every = monitor.every;
  if (box.every < 1 || box.samples() == 0 || box.z.count == 0)
    diagnostics::fail(where + ": the monitor " + monitor.file +
                      " covers no sample; its bounds go from low to high, and every is 1 or more");
  return box;
}

int nearest_x(const Grid& grid, double x, const std::string& where) {
  return across("x", grid.nx, grid.dx, grid).nearest("x", x, where);
}

int nearest_y(const Grid& grid, double y, const std::string& where) {
  return across("y", grid.ny, grid.dy, grid).nearest("y", y, where);
}
