#include "io/mode_field.h"

#include <cmath>

#include "diagnostics.h"
#include "wpm/lp01.h"

namespace {

// The phase of a plane wave tilted by these angles in a medium of wave number k.
class Tilt {
 public:
  Tilt(const Monitor& monitor, double k)
      : kx_(k * std::sin(monitor.tiltx * M_PI / 180)),
        ky_(k * std::sin(monitor.tilty * M_PI / 180)) {}
  double operator()(double x, double y) const { return kx_ * x + ky_ * y; }

 private:
  double kx_, ky_;  // rad/m
};

// value(x, y) of every sample, in metres from the mode's centre.
template <typename Value>
std::vector<cpx> fill(const Monitor& monitor, const Grid& grid, Value value) {
  const double x0 = monitor.x.value_or(0) * grid.metres;
  const double y0 = monitor.y.value_or(0) * grid.metres;
  std::vector<cpx> mode;
  mode.reserve(grid.plane());
  for (int j = 0; j < grid.ny; ++j)
    for (int i = 0; i < grid.nx; ++i) mode.push_back(value(grid.x(i) - x0, grid.y(j) - y0));
  return mode;
}

std::vector<cpx> gaussian(const Monitor& monitor, const Grid& grid, const Tilt& tilt) {
  const double waist = monitor.waist * grid.metres;
  return fill(monitor, grid, [waist, &tilt](double x, double y) {
    return std::exp(cpx(-(x * x + y * y) / (waist * waist), tilt(x, y)));
  });
}

std::vector<cpx> lp01(const Monitor& monitor, const Grid& grid, double k0, const Tilt& tilt,
                      const std::string& where) {
  const double radius = monitor.r.value_or(0) * grid.metres;
  if (!Lp01::exists(radius, monitor.n, monitor.ne, k0))
    diagnostics::fail(where + ": mode = lp01 needs r above 0 and n above ne above 0");
  const Lp01 mode(radius, monitor.n, monitor.ne, k0);
  return fill(monitor, grid, [&mode, &tilt](double x, double y) {
    return mode(std::hypot(x, y)) * std::polar(1.0, tilt(x, y));
  });
}

}  // namespace

std::vector<cpx> mode_field(const Monitor& monitor, const Grid& grid, const RunContext& run,
                            double n, const std::string& where) {
  std::vector<cpx> mode;
  const Tilt tilt(monitor, run.k0 * n);
  switch (monitor.mode) {
    case Monitor::Mode::kGaussian:
      mode = gaussian(monitor, grid, tilt);
      break;
    case Monitor::Mode::kLp01:
      mode = lp01(monitor, grid, run.k0, tilt, where);
      break;
    case Monitor::Mode::kFile:
      if (!run.read_mode) diagnostics::fail(where + ": mode = file cannot be read");
      mode = run.read_mode(monitor, grid);
      break;
    case Monitor::Mode::kInput:
      break;
  }
  double power = 0;
  for (const cpx& value : mode) power += std::norm(value);
  if (monitor.mode != Monitor::Mode::kInput && !(power > 0 && std::isfinite(power)))
    diagnostics::fail(where +
                      ": the mode is 0 on all samples or not finite; is its centre inside "
                      "the domain, and its waist or radius above a sample?");
  return mode;
}
