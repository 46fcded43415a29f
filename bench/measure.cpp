#include "measure.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace bench {
namespace {

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace

double seconds(const Work& work) {
  const double begin = wall_seconds();
  work();
  return wall_seconds() - begin;
}

double median_seconds(const Work& work, int runs) {
  std::vector<double> times;
  for (int run = 0; run < runs; ++run) times.push_back(seconds(work));
  return median(times);
}

Pair compare(const Work& a, const Work& b, int runs) {
  return compare_prepared([] {}, a, b, runs, wall_seconds);
}

double wall_seconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
double processor_seconds() {
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

Pair compare_prepared(const Work& prepare, const Work& a, const Work& b, int runs,
                      double (*clock)()) {
  const auto seconds_of = [&](const Work& work) {
    prepare();
    const double begin = clock();
    work();
    return clock() - begin;
  };
  seconds_of(a);
  seconds_of(b);
  std::vector<double> times_a;
  std::vector<double> times_b;
  std::vector<double> ratios;
  for (int run = 0; run < runs; ++run) {
    times_a.push_back(seconds_of(a));
    times_b.push_back(seconds_of(b));
    ratios.push_back(times_a.back() / times_b.back());
  }
  return {median(times_a), median(times_b), median(ratios)};
}

Steps::Steps(Scene& scene)
    : scene_(scene), stepper_(make_fast_stepper(scene.grid(), scene.options())) {}

void Steps::operator()() {
  const std::size_t plane = scene_.grid().plane();
  for (int k = 0; k + 1 < scene_.nz; ++k) {
    const auto slice = [&](int at) {
      const std::size_t begin = static_cast<std::size_t>(at) * plane;
      return Slice{&scene_.E[begin], &scene_.F[begin], &scene_.N[begin], at};
    };
    error_ = std::max(error_, step(*stepper_, slice(k), slice(k + 1)).error);
  }
}

void Steps::clear() {
  const auto plane = static_cast<std::ptrdiff_t>(scene_.grid().plane());
  std::fill(scene_.E.begin() + plane, scene_.E.end(), 0.0);
  std::fill(scene_.F.begin() + plane, scene_.F.end(), 0.0);
}

Scene growing_guide(int n, int slices) {
  constexpr double kSpacing = 0.25e-6;
  Scene scene(n, n, slices, kSpacing, kSpacing, kSpacing, 1e-6);
  for (int k = 0; k < slices; ++k) {
    const double radius = n * kSpacing * 0.2 * (1 + 0.5 * k / slices);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        const double x = scene.X[static_cast<std::size_t>(i)];
        const double y = scene.Y[static_cast<std::size_t>(j)];
        scene.N[scene.index(k, j, i)] = x * x + y * y > radius * radius ? 1.45 : 1.5;
      }
  }
  scene.illuminate([](double x, double y) { return 1e8 * std::exp(-(x * x + y * y) / 0.1e-12); });
  return scene;
}

void require_same(const Scene& a, const Scene& b, double bound, const std::string& what) {
  for (int k = 0; k < a.nz; ++k) {
    const double apart = difference(a, b, k).field;
    if (apart <= bound) continue;
    std::printf("%s: slice %d differs by %g of its largest value\n", what.c_str(), k, apart);
    std::exit(1);
  }
}

}  // namespace bench
