// What levels are worth, and what they cost: a lens in slices of several thicknesses.
#include <cmath>
#include <cstdio>

#include "measure.h"
#include "system/index_stack.h"

namespace bench {
namespace {

// Micrometres. A plano-convex lens of glass in air, flat side first, and a straight beam.
constexpr double kWavelength = 1, kRadius = 30, kGlass = 1.5, kThickness = 4.5, kWaist = 10;
constexpr double kWidth = 60;

Scene behind_lens(int side, double dz, int levels, double& seconds_taken) {
  struct_sysOptions so;
  so.nx = so.ny = side;
  so.nz = static_cast<int>(std::ceil(kThickness / dz - 1e-9)) + 2;
  so.f = 1e-6, so.dx = so.dy = kWidth / side, so.dz = dz;
  const struct_layer lens = {
      .t = LENS, .z = kThickness - 1e-9, .r = kRadius, .n = kGlass, .ne = 1, .levels = levels};
  const IndexStack stack(so, {lens, {.z = 1000, .n = 1}}, true);
  Scene scene(side, side, so.nz, so.dx * 1e-6, so.dy * 1e-6, dz * 1e-6, kWavelength * 1e-6);
  stack.paint(scene.N.data(), stack.whole());
  const double waist = kWaist * 1e-6;
  scene.illuminate(
      [=](double x, double y) { return 1e3 * std::exp(-(x * x + y * y) / (waist * waist)); });
  seconds_taken = seconds([&] { scene.propagate_by(make_fast_stepper); });
  return scene;
}

// The share of the last slice in a Gaussian mode whose waist lies some way on.
double coupling(const Scene& scene, double waist, double distance) {
  const double rayleigh = M_PI * waist * waist / kWavelength;
  const double w = waist * std::hypot(1, distance / rayleigh);
  const double curvature = distance + rayleigh * rayleigh / distance;
  cpx overlap = 0.0;
  double power = 0.0;
  for (int j = 0; j < scene.ny; ++j)
    for (int i = 0; i < scene.nx; ++i) {
      const double x = scene.X[static_cast<std::size_t>(i)] * 1e6;
      const double y = scene.Y[static_cast<std::size_t>(j)] * 1e6;
      const cpx mode =
          std::exp(-(x * x + y * y) * cpx(1 / (w * w), M_PI / (kWavelength * curvature)));
      overlap += std::conj(mode) * scene.at(scene.nz - 1, j, i);
      power += std::norm(mode);
    }
  return std::norm(overlap) / power / scene.power(scene.nz - 1);
}

struct Focus {
  double place, intensity;
};

// Where the axis is brightest between two places behind the last slice, in air: the first integral
// of Rayleigh and Sommerfeld (Born & Wolf, Principles of Optics, 8.11).
Focus find_focus(const Scene& scene, double from, double to) {
  Focus focus = {from, 0.0};
  for (double z = from * 1e-6; z < to * 1e-6; z += 0.5e-6) {
    cpx sum = 0.0;
    for (int j = 0; j < scene.ny; ++j)
      for (int i = 0; i < scene.nx; ++i) {
        const double x = scene.X[static_cast<std::size_t>(i)];
        const double y = scene.Y[static_cast<std::size_t>(j)];
        const double r = std::sqrt(x * x + y * y + z * z);
        sum += scene.at(scene.nz - 1, j, i) * std::polar(z / (r * r), scene.k0 * r) *
               cpx(1 / r, -scene.k0);
      }
    const double here = std::norm(sum * scene.dx * scene.dy / (2 * M_PI * 1e3));
    if (here > focus.intensity) focus = {z * 1e6, here};
  }
  return focus;
}

}  // namespace

void lens() {
  constexpr int kSide = 192;
  double seconds_taken = 0.0;
  const Scene smooth = behind_lens(kSide, 0.05, 64, seconds_taken);
  double waist = 0.0, distance = 0.0, best = 0.0;
  for (double w = 1; w < 5; w += 0.05)
    for (double z = 20; z < 70; z += 0.5)
      if (const double here = coupling(smooth, w, z); here > best)
        best = here, waist = w, distance = z;
  std::printf(
      "lens of radius %g um, beam of waist %g um, %d x %d; mode of waist %.2f um, %.1f um on\n",
      kRadius, kWaist, kSide, kSide, waist, distance);
  std::printf(
      "dz um  levels  coupling     focus: um  intensity     before 24 um: um  intensity     "
      "seconds of a step\n");
  const auto show = [&](const Scene& scene, double dz, int levels) {
    const Focus focus = find_focus(scene, 30, 75);
    const Focus before = find_focus(scene, 5, 24);
    std::printf("%5.2f  %6d  %8.4f  %12.1f  %9.2f  %19.1f  %9.2f  %20.4f\n", dz, levels,
                coupling(scene, waist, distance), focus.place, focus.intensity, before.place,
                before.intensity, seconds_taken / (scene.nz - 1));
  };
  show(smooth, 0.05, 64);
  for (const double dz : {0.9, 0.75, 0.45, 0.225, 0.1125})
    for (const int levels : {1, 8, 64}) {
      const Scene scene = behind_lens(kSide, dz, levels, seconds_taken);
      show(scene, dz, levels);
    }
}

}  // namespace bench
