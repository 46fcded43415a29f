// What the levels of a curved face cost: a step with --fast through a lens of several levels.
#include <cmath>
#include <cstdio>

#include "fftw++.h"
#include "measure.h"
#include "system/index_stack.h"
#include "wpm/survey.h"

namespace bench {
namespace {

// Micrometres: a lens of radius 30, its round side first, in slices of 0.4.
constexpr double kWidth = 80, kSlice = 0.4, kWavelength = 0.85e-6;

struct Lens {
  Scene scene;
  double pairs = 0;   // of indices, a step
  double filled = 0;  // of all groups of eight rows, those that hold a pair, on average
};

// The share of row groups, eight rows each, that hold a pair's samples: what the second pass of a
// pair's transform is left with.
double share_of_groups(const Scene& scene) {
  const int groups = (scene.ny + 7) / 8;
  double held = 0, pairs = 0;
  for (int k = 0; k + 1 < scene.nz; ++k) {
    std::vector<std::pair<cpx, cpx>> seen;
    const auto position = [&](int j, int i) {
      const std::pair<cpx, cpx> pair(scene.N[scene.index(k, j, i)],
                                     scene.N[scene.index(k + 1, j, i)]);
      for (std::size_t p = seen.size(); p-- > 0;)
        if (seen[p] == pair) return p;
      seen.push_back(pair);
      return seen.size() - 1;
    };
    for (int group = 0; group < groups; ++group) {
      std::vector<char> is_here;
      for (int j = 8 * group; j < std::min(8 * group + 8, scene.ny); ++j)
        for (int i = 0; i < scene.nx; ++i) {
          const std::size_t p = position(j, i);
          is_here.resize(std::max(is_here.size(), p + 1));
          is_here[p] = 1;
        }
      for (const char here : is_here) held += here;
    }
    pairs += static_cast<double>(seen.size());
  }
  return held / groups / pairs;
}

Lens lens_of(int side, int slices, int levels) {
  struct_sysOptions so;
  so.nx = so.ny = side;
  so.nz = slices;
  so.f = 1e-6, so.dx = so.dy = kWidth / side, so.dz = kSlice;
  const IndexStack stack(
      so, {{.t = LENS, .z = slices * kSlice, .r = -30, .n = 1.5, .ne = 1, .levels = levels}}, true);
  Lens lens = {Scene(side, side, slices, so.dx * 1e-6, so.dy * 1e-6, kSlice * 1e-6, kWavelength)};
  stack.paint(lens.scene.N.data(), stack.whole());
  lens.scene.illuminate([](double x, double y) {
    return 1e3 * std::exp(-((x - 1e-6) * (x - 1e-6) + y * y) / 49e-12);
  });
  lens.pairs = survey(stack, static_cast<double>(stack.grid().plane())).mean_pairs;
  lens.filled = share_of_groups(lens.scene);
  return lens;
}

// Milliseconds of the processor for a step, planning left out and every slice new to the stepper.
double step_ms(Scene& scene) {
  Steps steps(scene);
  steps.clear();
  const double begin = processor_seconds();
  steps();
  return 1e3 * (processor_seconds() - begin) / (scene.nz - 1);
}

// Milliseconds of an inverse transform of FFTW, of all rows and columns.
double transform_ms(int side) {
  const auto n = static_cast<unsigned>(side);
  std::vector<cpx> in(std::size_t{n} * n), out(in.size());
  fftwpp::fft2d inverse(n, n, 1, in.data(), out.data());
  std::fill(in.begin(), in.end(), 1.0);
  return 1e3 * median_seconds([&] { inverse.fft(in.data(), out.data()); }, 21);
}

}  // namespace

void levels() {
  constexpr int kSide = 512, kSlices = 13;
  constexpr double kTolerance = 1e-6;
  Lens small = lens_of(64, 4, 8);
  Scene direct = small.scene;
  direct.propagate();
  small.scene.propagate_by(make_fast_stepper);
  require_same(direct, small.scene, 1e-13, "levels");

  std::printf("a lens of radius 30 um over %g x %g um, %d x %d, slices of %g um, one thread\n",
              kWidth, kWidth, kSide, kSide, kSlice);
  std::printf("an inverse transform of FFTW: %.2f ms\n", transform_ms(kSide));
  std::printf("%8s %10s %16s %12s %12s %24s\n", "levels", "pairs", "rows with one", "ms a step",
              "ms a pair", "untrimmed, within 1e-6");
  for (const int levels : {1, 4, 8, 16, 64}) {
    Lens lens = lens_of(kSide, kSlices, levels);
    const double exact = step_ms(lens.scene);
    lens.scene.is_trimmed = false;
    step_ms(lens.scene);
    const Scene untrimmed = lens.scene;
    lens.scene.tolerance = kTolerance;
    const double within = step_ms(lens.scene);
    require_same(untrimmed, lens.scene, kSlices * kTolerance, "levels within a tolerance");
    std::printf("%8d %10.1f %15.0f%% %12.1f %12.2f %24.1f\n", levels, lens.pairs, 100 * lens.filled,
                exact, exact / lens.pairs, within);
  }
}

}  // namespace bench
