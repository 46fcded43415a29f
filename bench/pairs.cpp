// Steps of many pairs of indices, within a tolerance.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "measure.h"

namespace bench {
namespace {

// A beam through a graded lens with that many levels of its index.
Scene graded_lens(int side, int levels, double tolerance) {
  constexpr double kSpacing = 0.25e-6;
  Scene scene(side, side, 6, kSpacing, kSpacing, kSpacing, 1e-6);
  scene.is_trimmed = false;
  scene.tolerance = tolerance;
  const double radius = side * kSpacing / 2;
  for (int k = 0; k < scene.nz; ++k)
    for (int j = 0; j < side; ++j)
      for (int i = 0; i < side; ++i) {
        const double x = scene.X[static_cast<std::size_t>(i)];
        const double y = scene.Y[static_cast<std::size_t>(j)];
        const double rise = std::exp(-2 * (x * x + y * y) / (radius * radius));
        scene.N[scene.index(k, j, i)] = 1.5 + 0.1 * std::floor(levels * rise) / levels;
      }
  const double width = radius / 4;
  scene.illuminate([=](double x, double y) {
    return std::exp(-((x - 2e-6) * (x - 2e-6) + y * y) / (width * width));
  });
  return scene;
}

void graded() {
  constexpr int kSide = 512;
  constexpr double kTolerance = 1e-6;
  Scene many = graded_lens(kSide, 1000, kTolerance);
  Scene exact = graded_lens(kSide, 1000, 0);
  many.nz = exact.nz = 2;
  many.propagate_by(make_fast_stepper);
  exact.propagate_by(make_fast_stepper);
  require_same(exact, many, kTolerance, "many pairs");
  const double apart = difference(exact, many, 1).field;
  Scene few = graded_lens(kSide, 16, 0);
  many.nz = few.nz;
  Steps of_many(many);
  Steps of_few(few);
  const Pair pair = compare_prepared([&] { of_many.clear(), of_few.clear(); }, [&] { of_many(); },
                                     [&] { of_few(); }, 7, processor_seconds);
  const int steps = few.nz - 1;
  std::printf("many pairs: graded lens at %d x %d, 1000 levels of index, tolerance %g\n", kSide,
              kSide, kTolerance);
  std::printf("%.1f ms a step, %.2f times that of 16 levels (%.1f ms); first step within %.1g\n",
              pair.a / steps * 1e3, pair.ratio, pair.b / steps * 1e3, apart);
}

// Smooths along an axis whose samples lie stride apart, by a Gaussian of that standard deviation in
// samples, the ends taken as each other's neighbours.
void smooth(std::vector<double>& values, std::size_t stride, int count, double deviation) {
  const int reach = static_cast<int>(std::ceil(4 * deviation));
  std::vector<double> weights;
  for (int w = -reach; w <= reach; ++w)
    weights.push_back(std::exp(-0.5 * w * w / (deviation * deviation)));
  const std::size_t line = stride * static_cast<std::size_t>(count);
  std::vector<double> before(static_cast<std::size_t>(count));
  for (std::size_t begin = 0; begin < values.size(); begin += line)
    for (std::size_t first = begin; first < begin + stride; ++first) {
      for (std::size_t c = 0; c < before.size(); ++c) before[c] = values[first + c * stride];
      for (int c = 0; c < count; ++c) {
        double sum = 0;
        for (int w = -reach; w <= reach; ++w)
          sum += weights[static_cast<std::size_t>(w + reach)] *
                 before[static_cast<std::size_t>(((c + w) % count + count) % count)];
        values[first + static_cast<std::size_t>(c) * stride] = sum;
      }
    }
}

// A beam through a medium of index 1.33 to 1.40 that is another at every sample: normally
// distributed, its correlation exp(-(r / wavelength)^2), three standard deviations to either end.
Scene random_medium(int side, int slices, double tolerance) {
  constexpr double kSpacing = 0.25e-6, kWavelength = 1e-6;
  Scene scene(side, side, slices, kSpacing, kSpacing, kSpacing, kWavelength);
  scene.is_trimmed = false;
  scene.tolerance = tolerance;
  std::mt19937 random(1);
  std::normal_distribution<double> normal;
  std::vector<double> rise(scene.N.size());
  for (double& value : rise) value = normal(random);
  const double deviation = kWavelength / kSpacing / 2;
  const auto width = static_cast<std::size_t>(side);
  smooth(rise, 1, side, deviation);
  smooth(rise, width, side, deviation);
  smooth(rise, width * width, slices, deviation);
  double square = 0;
  for (const double value : rise) square += value * value;
  const double scale = 1 / std::sqrt(square / static_cast<double>(rise.size()));
  for (std::size_t s = 0; s < rise.size(); ++s)
    scene.N[s] = 1.365 + 0.035 / 3 * std::clamp(scale * rise[s], -3.0, 3.0);
  const double beam = side * kSpacing / 8;
  scene.illuminate([=](double x, double y) { return std::exp(-(x * x + y * y) / (beam * beam)); });
  return scene;
}

void random() {
  constexpr int kSmall = 64, kSide = 512, kSlices = 6;
  Scene few = graded_lens(kSide, 16, 0);
  Scene exact = random_medium(kSmall, kSlices, 0);
  exact.propagate_by(make_fast_stepper);
  std::printf(
      "random medium of 1.33 to 1.40, correlated over a wavelength, every sample another\n");
  std::printf("%10s %16s %10s %10s %16s %14s\n", "tolerance", "at 64 x 64 by it", "ms a step",
              "16 levels", "times 16 levels", "error found");
  for (const double tolerance : {1e-2, 1e-3, 1e-4, 1e-6}) {
    Scene small = exact;
    small.tolerance = tolerance;
    const PropagationTotals counts = small.propagate_by(make_fast_stepper);
    require_same(exact, small, kSlices * tolerance, "random medium");
    std::printf("%10g %11d of %2d", tolerance, counts.interpolated, kSlices - 1);
    if (counts.interpolated < kSlices - 1) {  // a direct sum of the large scene takes hours
      std::printf("\n");
      continue;
    }
    Scene many = random_medium(kSide, kSlices, tolerance);
    Steps of_many(many);
    Steps of_few(few);
    const Pair pair = compare_prepared([&] { of_many.clear(), of_few.clear(); }, [&] { of_many(); },
                                       [&] { of_few(); }, 3, processor_seconds);
    std::printf(" %10.1f %10.1f %16.2f %14.1g\n", pair.a / (kSlices - 1) * 1e3,
                pair.b / (few.nz - 1) * 1e3, pair.ratio, of_many.error());
  }
}

}  // namespace

void pairs() {
  graded();
  random();
}

}  // namespace bench
