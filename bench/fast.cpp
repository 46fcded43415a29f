#include <algorithm>
#include <cmath>
#include <cstdio>

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

}  // namespace

void fast() {
  against_reference();
  growth_and_limit();
}

}  // namespace bench
