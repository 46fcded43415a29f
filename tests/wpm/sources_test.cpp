#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "wpm/wpm.h"

namespace {

// An 8 x 8 x 2 grid of samples 0.5 um apart in x and 0.25 um in y. Slice 0 has index 1.5. The
// volumes start with wrong numbers.
struct Bench {
  Bench() {
    so.nx = so.ny = 8;
    so.nz = 2;
    so.dx = 0.5, so.dy = 0.25, so.dz = 0.75;
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

// The phase grows by n s.dr/lambda turns from sample to sample, n of slice 0. The wave moves with
// its position and turns back by n s_z z/lambda. Constants have ten digits: 1e-8 of a phase of a
// few turns.
TEST(Sources, PlaneWaveFollowsItsDirectionInTheLocalIndex) {
  struct_emfield f = wave(PLANE, 1.0);
  f.theta = 30, f.phi = 60;
  const double s[] = {0.25, std::sqrt(3.0) / 4, std::sqrt(3.0) / 2};
  const auto turned = [](double path) { return std::polar(1.0, 2 * M_PI * 1.5 * path); };
  Bench bench, moved, behind;
  EXPECT_EQ(bench.lay({f}), 1e-6);
  f.x = 0.5, f.y = -0.25;  // a sample each
  moved.lay({f});
  f.x = f.y = 0, f.z = 0.125;
  behind.lay({f});
  EXPECT_LE(std::abs(bench.at(4, 4) - 2.0), 1e-12);
  for (int ix = 1; ix < 8; ++ix)
    for (int iy = 0; iy < 7; ++iy) {
      EXPECT_LE(std::abs(bench.at(ix, iy) / bench.at(ix - 1, iy) - turned(0.5 * s[0])), 3e-7);
      EXPECT_LE(std::abs(bench.at(ix, iy + 1) / bench.at(ix, iy) - turned(0.25 * s[1])), 3e-7);
      EXPECT_LE(std::abs(moved.at(ix, iy) - bench.at(ix - 1, iy + 1)), 1e-12);
      EXPECT_LE(std::abs(behind.at(ix, iy) / bench.at(ix, iy) - turned(-0.125 * s[2])), 3e-7);
    }
  // |amp|^2 k0 cos(theta) everywhere, without the index.
  for (int i = 0; i < 64; ++i)
    EXPECT_NEAR(bench.F[static_cast<std::size_t>(i)], 8e6 * M_PI * s[2], 1.0);
  EXPECT_EQ(bench.E[64], 0.0);
  EXPECT_EQ(bench.F[127], 0.0);
}

// At a distance of sigma along either axis the field is exp(-1/pi) of the peak. The field is a
// product of one factor per axis. The flux has no envelope.
TEST(Sources, GaussianWaveHasItsEnvelopeInTheFieldAndNotInTheFlux) {
  Bench bench;
  struct_emfield f = wave(GAUSSIAN, 1.0);
  f.sigmay = 0.5;
  bench.lay({f});
  for (const cpx& at_sigma : {bench.at(6, 4), bench.at(2, 4), bench.at(4, 6), bench.at(4, 2)})
    EXPECT_NEAR(std::abs(at_sigma / bench.at(4, 4)), std::exp(-1 / M_PI), 1e-8);
  EXPECT_NEAR(std::abs(bench.at(0, 1) * bench.at(4, 4) - bench.at(0, 4) * bench.at(4, 1)), 0,
              1e-15);
  EXPECT_EQ(bench.F[0], bench.F[36]);
}

TEST(Sources, RandomWaveTakesTheUnseededSequenceColumnByColumn) {
  Bench bench;
  std::srand(1);  // the seed of an unseeded generator
  struct_emfield f = wave(RANDOM, 1.0);
  f.amp = 0.5;
  bench.lay({f});
  std::srand(1);
  for (int ix = 0; ix < 8; ++ix)
    for (int iy = 0; iy < 8; ++iy)
      EXPECT_NEAR(bench.at(ix, iy).real(), (std::rand() % 1000) / 1000.0 * 0.25, 1e-16);
}

// Waves do not add up: the last sets the field, the first the wavelength.
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

  Bench late;  // a wavelength of 0 is skipped
  EXPECT_EQ(late.lay({wave(PLANE, 0.0), wave(PLANE, 0.8)}), 0.8 * 1e-6);
  EXPECT_EQ(late.log.find(kWarning), std::string::npos);
}

TEST(Sources, NoWaveLeavesSliceZeroAndClearsTheRest) {
  Bench bench;
  EXPECT_EQ(bench.lay({}), 0.0);
  EXPECT_EQ(bench.E[63], 9.0);
  EXPECT_EQ(bench.E[64], 0.0);
}

// A size of 0 counts as 1, in the waves and in the clearing. Vectors of exact size let the address
// sanitizer find overruns.
TEST(Sources, SizeOfZeroCountsAsOne) {
  struct Case {
    int nx, ny, nz;
    std::size_t slice, samples;
  };
  for (const Case& c :
       {Case{4, 4, 0, 16, 16}, Case{0, 4, 3, 4, 12}, Case{4, 0, 2, 4, 8}, Case{0, 0, 0, 1, 1}}) {
    Bench bench;
    bench.so.nx = c.nx, bench.so.ny = c.ny, bench.so.nz = c.nz;
    std::vector<cpx> E(c.samples, 9.0);
    std::vector<double> F(c.samples, 9.0);
    const std::vector<cpx> N(c.slice, 1.0);
    const std::vector<struct_emfield> waves = {wave(PLANE, 1.0)};
    EXPECT_EQ(init_E(E.data(), F.data(), N.data(), &bench.so, &waves, true), 1e-6);
    for (std::size_t s = 0; s < c.samples; ++s) {
      EXPECT_EQ(E[s], s < c.slice ? 2.0 : 0.0) << c.nx << c.ny << c.nz << " sample " << s;
      EXPECT_NEAR(F[s], s < c.slice ? 8 * M_PI * 1e6 : 0.0, 1.0);
    }
  }
}

}  // namespace
