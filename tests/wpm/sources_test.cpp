#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "wpm/wpm.h"

namespace {

// An 8 x 8 x 2 grid of 0.5 um samples, slice 0 of index 1.5, the volumes full of rubbish.
struct Bench {
  Bench() {
    so.nx = so.ny = 8;
    so.nz = 2;
    so.dx = so.dy = so.dz = 0.5;
    so.f = 1e-6;
  }
  double lay(const std::vector<struct_emfield>& waves) {
    testing::internal::CaptureStdout();
    const double lambda = init_E(E.data(), F.data(), N.data(), &so, &waves, false);
    log = testing::internal::GetCapturedStdout();
    return lambda;
  }
  [[nodiscard]] cpx at(int ix, int iy) const { return E[static_cast<std::size_t>(iy * 8 + ix)]; }

  struct_sysOptions so;
  std::vector<cpx> E = std::vector<cpx>(128, 9.0);
  std::vector<cpx> N = std::vector<cpx>(128, {1.5, 0.3});
  std::vector<double> F = std::vector<double>(128, 9.0);
  std::string log;
};

struct_emfield wave(shape s, double lambda) {
  struct_emfield f;
  f.s = s;
  f.amp = 2.0;
  f.lambda = lambda;
  f.sigmax = 1.0;
  f.sigmay = 2.0;
  return f;
}

// The phase is (r - r0).s 2 pi n / lambda with the real index of slice 0; constants cut at ten
// digits leave 1e-8 of a phase of a few turns.
TEST(Sources, PlaneWaveFollowsItsDirectionInTheLocalIndex) {
  Bench bench;
  struct_emfield f = wave(PLANE, 1.0);
  f.theta = 30, f.phi = 60, f.x = 0.25, f.y = -0.5, f.z = 0.125;
  EXPECT_EQ(bench.lay({f}), 1e-6);
  const double s[] = {0.5 * 0.5, 0.5 * std::sqrt(0.75), std::sqrt(0.75)};
  for (const auto& [ix, iy] : {std::pair(4, 4), std::pair(0, 7), std::pair(6, 1)}) {
    const double path =
        (0.5 * (ix - 4) - 0.25) * s[0] + (0.5 * (iy - 4) + 0.5) * s[1] - 0.125 * s[2];
    const cpx expected = 2.0 * std::exp(cpx(0.0, 2 * M_PI * 1.5 * path));
    EXPECT_LE(std::abs(bench.at(ix, iy) - expected), 3e-7);
    // |amp|^2 k0 cos(theta), without the index.
    EXPECT_NEAR(bench.F[static_cast<std::size_t>(iy * 8 + ix)], 4.0 * 2 * M_PI * 1e6 * s[2], 1.0);
  }
  EXPECT_EQ(bench.E[64], 0.0);
  EXPECT_EQ(bench.F[127], 0.0);
}

TEST(Sources, GaussianWaveHasItsEnvelopeInTheFieldAndNotInTheFlux) {
  Bench bench;
  bench.lay({wave(GAUSSIAN, 1.0)});
  // exp(-(x^2/sigmax^2 + y^2/sigmay^2)/pi) at x = 1, y = -1.
  EXPECT_NEAR(bench.at(6, 2).real(), 2.0 * std::exp(-(1.0 + 0.25) / M_PI), 1e-8);
  EXPECT_EQ(bench.F[0], bench.F[36]);
}

TEST(Sources, RandomWaveTakesTheUnseededSequenceColumnByColumn) {
  Bench bench;
  std::srand(1);  // what an unseeded generator starts from
  struct_emfield f = wave(RANDOM, 1.0);
  f.amp = 0.5;
  bench.lay({f});
  std::srand(1);
  for (int ix = 0; ix < 8; ++ix)
    for (int iy = 0; iy < 8; ++iy)
      EXPECT_NEAR(bench.at(ix, iy).real(), (std::rand() % 1000) / 1000.0 * 0.25, 1e-16);
}

// Waves do not add up: the last decides the field, the first the wavelength.
TEST(Sources, LastWaveDecidesTheFieldAndTheFirstTheWavelength) {
  constexpr const char* kWarning =
      "\033[31m[W]\tAttention! Multiple wavelengths specified in configuration file.\033[0m\n";
  Bench alone;
  alone.lay({wave(PLANE, 0.8)});
  EXPECT_EQ(alone.log.find(kWarning), std::string::npos);
  Bench several;
  EXPECT_EQ(several.lay({wave(GAUSSIAN, 1.0), wave(PLANE, 0.5), wave(PLANE, 0.8)}), 1e-6);
  EXPECT_EQ(several.E, alone.E);
  const std::size_t first = several.log.find(kWarning);
  ASSERT_NE(first, std::string::npos);
  EXPECT_NE(several.log.find(kWarning, first + 1), std::string::npos) << "once per differing wave";

  Bench late;  // a wavelength of 0 is not the first one
  EXPECT_EQ(late.lay({wave(PLANE, 0.0), wave(PLANE, 0.8)}), 0.8 * 1e-6);
  EXPECT_EQ(late.log.find(kWarning), std::string::npos);
}

TEST(Sources, NoWaveLeavesSliceZeroAndClearsTheRest) {
  Bench bench;
  EXPECT_EQ(bench.lay({}), 0.0);
  EXPECT_EQ(bench.E[63], 9.0);
  EXPECT_EQ(bench.E[64], 0.0);
}

// Without a slice there is nothing to write to or read from; vectors of exact size let the address
// sanitizer see a slip.
TEST(Sources, VolumeWithoutSlicesTakesNothing) {
  Bench bench;
  bench.so.nz = 0;
  bench.E.clear(), bench.F.clear(), bench.N.clear();
  bench.E.shrink_to_fit(), bench.F.shrink_to_fit(), bench.N.shrink_to_fit();
  EXPECT_EQ(bench.lay({wave(PLANE, 1.0)}), 1e-6);
}

}  // namespace
