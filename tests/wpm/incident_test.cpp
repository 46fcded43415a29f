// Sums of waves, modes and files, and warnings about a useless field.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

#include "diagnostics.h"
#include "support/process.h"
#include "system/description.h"
#include "wpm/field_sources.h"
#include "wpm/lp01.h"
#include "wpm/sampled_field.h"
#include "wpm/wpm.h"
#if ZERITH_HAS_HDF5
#include "data/hdf5_writer.h"
#include "support/errors.h"
#endif

namespace {

// One slice of 16 x 12 samples of 0.25 by 0.5 um.
struct Bench {
  Bench() {
    so.nx = 16, so.ny = 12, so.nz = 1;
    so.dx = 0.25, so.dy = 0.5, so.dz = 0.1, so.f = 1e-6;
    so.sysname = "a.cfg";
  }
  void lay(const std::vector<struct_emfield>& waves) {
    lay_incident_field(E.data(), F.data(), N.data(), so, waves, true);
  }
  [[nodiscard]] double flux() const { return std::accumulate(F.begin(), F.end(), 0.0); }
  [[nodiscard]] cpx at(int i, int j) const { return E[static_cast<std::size_t>(j * 16 + i)]; }

  struct_sysOptions so;
  std::vector<cpx> E = std::vector<cpx>(192, 9.0);
  std::vector<cpx> N = std::vector<cpx>(192, 1.0);
  std::vector<double> F = std::vector<double>(192, 9.0);
};

struct_emfield wave(shape s, double amp, double theta = 0, bool add = false) {
  struct_emfield f;
  f.s = s;
  f.amp = amp;
  f.theta = theta;
  f.add = add;
  f.lambda = 1.0;
  f.line = 7;
  return f;
}

// Two plane waves at +-30 degrees have a period of lambda / (2 sin 30) = 1 um, four samples, dark
// between. Nine digits of pi give sin 30 to 1e-9. The flux of waves that the grid resolves is the
// sum of theirs.
TEST(Incident, AddedWavesInterfere) {
  Bench bench;
  bench.lay({wave(GAUSSIAN, 5), wave(PLANE, 1, 30), wave(PLANE, 1, -30, true)});
  for (int i = 0; i < 16; ++i)
    EXPECT_NEAR(std::norm(bench.at(i, 5)), 4 * std::pow(std::cos(M_PI * (i - 8) / 4), 2), 1e-6);
  Bench alone;
  alone.lay({wave(PLANE, 1, 30)});
  EXPECT_NEAR(bench.flux() / (2 * alone.flux()), 1.0, 1e-7);
}

// Two halves of a wave add up to the wave. A wave that replaces removes those before it.
TEST(Incident, SumsBeginAnewWithAWaveThatReplaces) {
  Bench whole;
  whole.lay({wave(PLANE, 3, 20)});
  Bench halves;
  halves.lay(
      {wave(PLANE, 7), wave(PLANE, 7, 0, true), wave(PLANE, 1, 20), wave(PLANE, 2, 20, true)});
  for (std::size_t s = 0; s < 192; ++s) {
    EXPECT_LE(std::abs(halves.E[s] - whole.E[s]), 1e-14);
    EXPECT_NEAR(halves.F[s] / whole.F[s], 1.0, 1e-14);
  }
  Bench first;  // no wave is before it
  first.lay({wave(PLANE, 3, 20, true)});
  EXPECT_EQ(first.E, whole.E);
}

TEST(Incident, FibreModeStandsAroundItsPlaceAndCarriesItsFlux) {
  Bench bench;
  struct_emfield f = wave(LP01, 2);
  f.x = 0.5, f.y = -1, f.r = 0.9, f.n = 1.5, f.ne = 1.45;
  bench.lay({f});
  EXPECT_EQ(vacuum_wavelength({f}, bench.so.f), 1e-6);
  const Lp01 mode(0.9e-6, 1.5, 1.45, 2 * M_PI * 1e6);
  EXPECT_NEAR(bench.at(10, 4).real(), 2.0, 1e-12);
  EXPECT_NEAR(bench.at(14, 6).real(), 2 * mode(std::hypot(1.0, 1.0) * 1e-6), 1e-8);
  double power = 0.0;
  for (const cpx& e : bench.E) power += std::norm(e);
  EXPECT_NEAR(bench.flux() / (power * 2 * M_PI * 1e6), 1.0, 1e-8);
  f.ne = 1.5;
  EXPECT_ERROR(bench.lay({f}), "a.cfg: line 7: .*no mode");
}

TEST(Incident, UselessFieldsDrawAWarningWithTheLikelyReason) {
  const auto narrow = [] {
    struct_emfield f = wave(GAUSSIAN, 1);
    f.sigmax = 1;
    return f;
  };
  struct Case {
    std::vector<struct_emfield> waves;
    cpx index;
    const char* warning;
  };
  const double nan = std::nan("");
  for (const Case& c : std::vector<Case>{
           {{wave(PLANE, 1)}, 1.0, ""},
           {{wave(PLANE, 0)}, 1.0, "a.cfg: line 7: the incident field is zero everywhere: give"},
           {{wave(PLANE, 1), narrow()},
            1.0,
            "a.cfg: line 7: the incident field is not finite: a G"},
           {{narrow(), wave(PLANE, 1)}, 1.0, ""},  // replaced
           {{wave(PLANE, 1)}, nan, "a.cfg: the incident field is not finite: the index of slice 0"},
           {{wave(PLANE, nan)},
            1.0,
            "a.cfg: line 7: the incident field is not finite: look at amp"}}) {
    Bench bench;
    std::fill(bench.N.begin(), bench.N.end(), c.index);
    const Messages messages;
    bench.lay(c.waves);
    const std::vector<std::string>& said = messages.warnings();
    ASSERT_EQ(said.size(), *c.warning == '\0' ? 0U : 1U) << c.warning;
    EXPECT_TRUE(said.empty() || said.back().starts_with(c.warning)) << said.back();
  }
}

#if ZERITH_HAS_HDF5

// Files of a wave in the folder of the configuration.
class FileWave : public testing::Test {
 protected:
  FileWave() {
    bench.so.sysname = folder.path("a.cfg").string();
    f.file = "wave.h5";
  }
  // [nz][ny][nx] samples of value(x, y, k), positions in samples from the middle.
  template <typename Value>
  void save(hsize_t nz, hsize_t ny, hsize_t nx, Value value,
            const std::vector<double>& spacing = {}, const std::vector<double>& origin = {}) {
    values.clear();
    for (hsize_t k = 0; k < nz; ++k)
      for (hsize_t j = 0; j < ny; ++j)
        for (hsize_t i = 0; i < nx; ++i)
          values.push_back(value(static_cast<double>(i) - static_cast<double>(nx / 2),
                                 static_cast<double>(j) - static_cast<double>(ny / 2), k));
    Hdf5Writer file(folder.path("wave.h5").string());
    file.write("E", {nz, ny, nx, 2}, reinterpret_cast<const double*>(values.data()));
    if (!spacing.empty()) file.attribute("VTKHDF", "Spacing", spacing);
    if (!origin.empty()) file.attribute("VTKHDF", "Origin", origin);
  }
  TempDir folder;
  Bench bench;
  std::vector<cpx> values;                 // of the last file
  struct_emfield f = wave(FIELD_FILE, 0);  // without amp
};

constexpr auto kWavy = [](double x, double y, hsize_t k) {
  return std::exp(cpx(-0.01 * x * x, 0.3 * y)) / (1.0 + static_cast<double>(k));
};

// The file has attributes, dx and dy, or neither. A part of the grid keeps its place.
TEST_F(FileWave, OnTheSamplesOfTheFileIsTheFileToTheLastBit) {
  save(1, 12, 16, kWavy, {0.25e-6, 0.5e-6, 1e-7}, {-8 * 0.25e-6, -6 * 0.5e-6, 3e-6});
  bench.lay({f});
  const std::vector<cpx> by_attributes = bench.E;
  save(1, 12, 16, kWavy);
  bench.lay({f});
  EXPECT_EQ(bench.E, by_attributes);
  f.dx = 0.25, f.dy = 0.5;
  bench.lay({f});
  EXPECT_EQ(bench.E, by_attributes);
  for (int j = 0; j < 12; ++j)
    for (int i = 0; i < 16; ++i) {
      EXPECT_EQ(bench.at(i, j), values[static_cast<std::size_t>(j * 16 + i)]);
      EXPECT_NEAR(bench.F[static_cast<std::size_t>(j * 16 + i)] /
                      (std::norm(bench.at(i, j)) * 2 * M_PI * 1e6),
                  1.0, 1e-8);
    }

  f.dx = f.dy = 0;
  save(1, 5, 7, kWavy, {0.25e-6, 0.5e-6, 1e-7}, {-3 * 0.25e-6, 1 * 0.5e-6, 0.0});
  bench.lay({f});
  for (int j = 0; j < 12; ++j)
    for (int i = 0; i < 16; ++i)
      EXPECT_EQ(bench.at(i, j), i < 5 || i > 11 || j < 7
                                    ? 0.0
                                    : values[static_cast<std::size_t>((j - 7) * 7 + i - 5)]);
}

// Cubic convolution reproduces a quadratic exactly, also at the rim, and is 0 beyond it.
TEST_F(FileWave, IsInterpolatedBetweenTheSamplesOfTheFile) {
  const auto quadratic = [](double x, double y) { return cpx(1 + x * x - x * y, 2 * y * y - x); };
  // 5 x 4 samples of 0.6 by 0.9 um: x from -1.2 to 1.2, y from -1.8 to 0.9.
  save(1, 4, 5, [&](double x, double y, hsize_t) { return quadratic(0.6 * x, 0.9 * y); });
  f.dx = 0.6, f.dy = 0.9, f.x = 0.1, f.amp = 3;
  bench.lay({f});
  for (int j = 0; j < 12; ++j)
    for (int i = 0; i < 16; ++i) {
      const double x = 0.25 * (i - 8) - 0.1;
      const double y = 0.5 * (j - 6);
      const bool is_inside = std::fabs(x) <= 1.2 && y >= -1.8 && y <= 0.9;
      EXPECT_LE(std::abs(bench.at(i, j) - (is_inside ? 3.0 * quadratic(x, y) : 0.0)), 1e-12);
    }
}

TEST_F(FileWave, OfSeveralSlicesTheOneAtZIsTaken) {
  save(3, 12, 16, kWavy, {0.25e-6, 0.5e-6, 1e-6}, {-2e-6, -3e-6, 5e-6});
  f.z = 6.4, f.theta = 30;
  bench.lay({f});
  const cpx tilt = std::exp(cpx(0, 2 * M_PI * 0.25 * 3 * 0.5));
  EXPECT_LE(std::abs(bench.at(11, 2) - kWavy(3, -4, 1) * tilt), 1e-8);
  const auto expect_error = [&](const char* message) {
    EXPECT_ERROR(bench.lay({f}), std::string("a.cfg: line 7: .*wave.h5:/E ") + message);
  };
  f.z = 0;
  expect_error("has 3 slices and none at z; they lie from 5.* to 7.* um");
  save(3, 12, 16, kWavy);
  expect_error("has 3 slices and no attribute Spacing");
  save(1, 11, 16, kWavy);
  expect_error("has 16 x 11 samples, not those of the grid");
}

#endif

}  // namespace
