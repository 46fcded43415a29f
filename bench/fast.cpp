#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "fftw++.h"
#include "measure.h"
#include "wpm/threads.h"

namespace bench {
namespace {

void against_reference() {
  std::printf("--fast against the reference, one step\n");
  std::printf("%8s %14s %10s %8s\n", "side", "reference ms", "fast ms", "ratio");
  for (const int side : {48, 64, 96}) {
    Scene reference = growing_guide(side, 3);
    Scene transformed = reference;
    reference.propagate();
    transformed.propagate_by(make_fast_stepper);
    require_same(reference, transformed, 1e-13, "fast");
    const Pair pair = compare([&] { reference.propagate(); },
                              [&] { transformed.propagate_by(make_fast_stepper); }, 3);
    std::printf("%8d %14.1f %10.2f %8.0f\n", side, pair.a / 2 * 1e3, pair.b / 2 * 1e3, pair.ratio);
  }
}

// Steps through a scene with a stepper that has planned, again and again.
class Steps {
 public:
  explicit Steps(Scene& scene)
      : scene_(scene), stepper_(make_fast_stepper(scene.grid(), scene.options())) {}

  void operator()() {
    const std::size_t plane = scene_.grid().plane();
    for (int k = 0; k + 1 < scene_.nz; ++k) {
      const auto slice = [&](int at) {
        const std::size_t begin = static_cast<std::size_t>(at) * plane;
        return Slice{&scene_.E[begin], &scene_.F[begin], &scene_.N[begin], at};
      };
      stepper_->step(slice(k), slice(k + 1));
    }
  }
  // Makes all slices behind the first dark, as a step wants them.
  void clear() {
    const auto plane = static_cast<std::ptrdiff_t>(scene_.grid().plane());
    std::fill(scene_.E.begin() + plane, scene_.E.end(), 0.0);
    std::fill(scene_.F.begin() + plane, scene_.F.end(), 0.0);
  }

 private:
  Scene& scene_;
  std::unique_ptr<CpuStepper> stepper_;
};

// One forward and one inverse transform for each pair of indices, of FFTW alone, for each step.
class Limit {
 public:
  Limit(Scene& scene, int pairs)
      : scene_(scene),
        pairs_(pairs),
        S_(2, std::vector<cpx>(scene.grid().plane())),
        forward_(side(), side(), -1, nullptr, S_[0].data()),
        inverse_(side(), side(), 1, nullptr, S_[0].data()) {}

  void operator()() {
    for (int t = 0; t < transforms(); ++t) transform(t, 0);
  }
  // The same by two threads, each with transforms and results of its own: what more threads are
  // worth where nothing is shared.
  void by_two() {
    constexpr double kMuch = 1e9;  // ns
    wpm::share_out(transforms(), kMuch, [this](int t, int worker) { transform(t, worker); });
  }

 private:
  [[nodiscard]] unsigned side() const { return static_cast<unsigned>(scene_.nx); }
  [[nodiscard]] int transforms() const { return (scene_.nz - 1) * (1 + pairs_); }
  void transform(int t, int worker) {
    auto& transform = t % (1 + pairs_) == 0 ? forward_ : inverse_;
    transform.fft(scene_.E.data(), S_[static_cast<std::size_t>(worker)].data());
  }
  Scene& scene_;
  int pairs_;
  std::vector<std::vector<cpx>> S_;  // [worker]
  fftwpp::fft2d forward_, inverse_;
};

double wall_seconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
// Of one thread: other programs take less part in it.
double processor_seconds() {
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

// As compare, by another clock, with something done before each that isn't timed.
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
  const auto median = [](std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
  };
  return {median(times_a), median(times_b), median(ratios)};
}

void growth_and_limit() {
  constexpr int kPairs = 3;
  std::printf("--fast per step, three pairs of indices; limit: 1 + 3 transforms of FFTW\n");
  std::printf("%8s %10s %10s %8s %12s %8s %12s %16s\n", "side", "fast ms", "limit ms", "ratio",
              "2 threads ms", "gain", "limit's gain", "ns/(N log2 N)");
  for (const int side : {64, 128, 256, 512, 1024}) {
    Scene scene = growing_guide(side, side <= 256 ? 22 : 6);
    const int steps = scene.nz - 1;
    const int runs = side <= 128 ? 41 : 11;
    Steps fast(scene);
    Limit limit(scene, kPairs);
    const Pair one = compare_prepared([&] { fast.clear(); }, [&] { fast(); }, [&] { limit(); },
                                      runs, processor_seconds);
    // The team stays for all of it: one thread is a limit to one.
    wpm::set_threads(2);
    Steps on_two(scene);
    const auto alone = [](const auto& work) {
      const wpm::ThreadLimit limit_to_one(1);
      work();
    };
    const Pair two = compare_prepared([&] { fast.clear(); }, [&] { alone([&] { fast(); }); },
                                      [&] { on_two(); }, runs, wall_seconds);
    const Pair bare = compare_prepared([] {}, [&] { alone([&] { limit(); }); },
                                       [&] { limit.by_two(); }, runs, wall_seconds);
    wpm::set_threads(1);
    const double samples = static_cast<double>(side) * side;
    std::printf("%8d %10.3f %10.3f %8.2f %12.3f %8.2f %12.2f %16.2f\n", side, one.a / steps * 1e3,
                one.b / steps * 1e3, one.ratio, two.b / steps * 1e3, two.ratio, bare.ratio,
                one.a / steps / (samples * std::log2(samples)) * 1e9);
  }
}

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

void many_pairs() {
  constexpr int kSide = 512;
  constexpr double kTolerance = 1e-6;
  Scene many = graded_lens(kSide, 1000, kTolerance);
  Scene exact = graded_lens(kSide, 1000, 0);
  many.nz = exact.nz = 2;
  many.propagate_by(make_fast_stepper);
  exact.propagate_by(make_fast_stepper);
  require_same(exact, many, kTolerance, "many pairs");
  const double apart = difference(exact, many, 1).field;
  many.nz = 6;
  Scene few = graded_lens(kSide, 16, 0);
  Steps of_many(many);
  Steps of_few(few);
  const Pair pair = compare_prepared([&] { of_many.clear(), of_few.clear(); }, [&] { of_many(); },
                                     [&] { of_few(); }, 7, processor_seconds);
  std::printf("many pairs: graded lens at %d x %d, 1000 levels of index, tolerance %g\n", kSide,
              kSide, kTolerance);
  std::printf("%.1f ms a step, %.2f times that of 16 levels (%.1f ms); first step within %.1g\n",
              pair.a / 5 * 1e3, pair.ratio, pair.b / 5 * 1e3, apart);
}

}  // namespace

void fast() {
  against_reference();
  growth_and_limit();
  many_pairs();
}

}  // namespace bench
