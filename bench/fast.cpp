#include <omp.h>

#include <cmath>
#include <cstdio>

#include "fftw++.h"
#include "measure.h"

namespace bench {
namespace {

void against_reference() {
  std::printf("--fast against the reference, one step\n");
  std::printf("%8s %14s %10s %8s\n", "side", "reference ms", "fast ms", "ratio");
  for (const int side : {48, 64, 96}) {
    Scene reference = growing_guide(side, 3);
    Scene transformed = reference;
    reference.propagate();
    transformed.propagate(zerith_fast_3D);
    require_same(reference, transformed, 1e-13, "fast");
    const Pair pair =
        compare([&] { reference.propagate(); }, [&] { transformed.propagate(zerith_fast_3D); }, 3);
    std::printf("%8d %14.1f %10.2f %8.0f\n", side, pair.a / 2 * 1e3, pair.b / 2 * 1e3, pair.ratio);
  }
}

// Time per step, planning and first transfer functions left out: the difference of a long and a
// short run.
double step_seconds(Scene& scene, int runs) {
  const int slices = scene.nz;
  const Pair pair = compare([&] { scene.propagate(zerith_fast_3D); },
                            [&] {
                              scene.nz = 2;
                              scene.propagate(zerith_fast_3D);
                              scene.nz = slices;
                            },
                            runs);
  return (pair.a - pair.b) / (slices - 2);
}

// One forward and one inverse transform for each pair of indices.
double limit_seconds(Scene& scene, int pairs, int runs) {
  const auto samples = static_cast<std::size_t>(scene.nx) * static_cast<std::size_t>(scene.ny);
  std::vector<cpx> S(samples);
  const auto side = static_cast<unsigned>(scene.nx);
  fftwpp::fft2d forward(side, side, -1, nullptr, S.data());
  fftwpp::fft2d inverse(side, side, 1, nullptr, S.data());
  return median_seconds(
      [&] {
        forward.fft(scene.E.data(), S.data());
        for (int pair = 0; pair < pairs; ++pair) inverse.fft(scene.E.data(), S.data());
      },
      runs);
}

void growth_and_limit() {
  constexpr int kPairs = 3;
  std::printf("--fast per step, three pairs of indices; limit: 1 + 3 transforms of FFTW\n");
  std::printf("%8s %10s %10s %8s %12s %16s\n", "side", "fast ms", "limit ms", "ratio",
              "2 threads ms", "ns/(N log2 N)");
  for (const int side : {64, 128, 256, 512, 1024}) {
    Scene scene = growing_guide(side, side <= 256 ? 22 : 6);
    const int runs = side <= 512 ? 5 : 3;
    const double limit_before = limit_seconds(scene, kPairs, 15);
    const double one = step_seconds(scene, runs);
    omp_set_num_threads(2);
    const double two = step_seconds(scene, runs);
    omp_set_num_threads(1);
    const double limit = (limit_before + limit_seconds(scene, kPairs, 15)) / 2;
    const double samples = static_cast<double>(side) * side;
    std::printf("%8d %10.2f %10.2f %8.2f %12.2f %16.2f\n", side, one * 1e3, limit * 1e3,
                one / limit, two * 1e3, one / (samples * std::log2(samples)) * 1e9);
  }
}

}  // namespace

void fast() {
  against_reference();
  growth_and_limit();
}

}  // namespace bench
