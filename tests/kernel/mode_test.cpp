// One plane wave across one step, on the device.
#include <cmath>
#include <complex>

#include "device_test.h"
#include "probes.h"

namespace {

using cpx = std::complex<double>;
using Root = DeviceTest;
using Trim = DeviceTest;
using Transmission = DeviceTest;
using Mode = DeviceTest;

cpx c(double2 z) {
  return {z.x, z.y};
}

TEST_F(Root, SquaresToItsArgument) {
  const std::vector<double2> values = {{4, 0},      {-4, 0},         {0, 2},
                                       {3, 4},      {-3, -4},        {-3, -0.0},
                                       {1e-150, 0}, {1e150, -1e150}, {1, -1e-3}};
  const std::vector<double2> roots = probes::roots(values);
  for (std::size_t v = 0; v < values.size(); ++v) {
    const cpx z = c(values[v]);
    // 1 - c loses what the ratio of the parts has in digits; none of these has less than 1e-3.
    EXPECT_LE(std::abs(c(roots[v]) * c(roots[v]) - z), 1e-12 * std::abs(z)) << z;
    EXPECT_GE(roots[v].x, 0.0) << z;
    EXPECT_EQ(std::signbit(roots[v].y), std::signbit(values[v].y)) << z;
  }
}

// What is evanescent is told by an exact zero.
TEST_F(Root, NegativeRealAxisHasNoRealPart) {
  const std::vector<double2> values = {{-4, 0}, {-1e-9, 0}, {-0.1, -0.0}, {-7.3e20, 0}, {0, 0}};
  for (const double2& root : probes::roots(values)) EXPECT_EQ(root.x, 0.0);
}

// In double precision 0.3/0.0001 and 0.7/0.0001 are just under a whole number, in single they are
// it.
TEST_F(Trim, FloorsInSinglePrecision) {
  const struct {
    double value;
    double steps;
  } rows[] = {{1, 10000},  {0.99996, 9999}, {-0.00001, -1},  {-0.5, -5000},     {0.1, 1000},
              {0.3, 3000}, {0.7, 7000},     {0.29999, 2999}, {-0.70001, -7001}, {0, 0}};
  std::vector<double> values;
  for (const auto& row : rows) values.push_back(row.value);
  const std::vector<double> trimmed = probes::trims(values);
  for (std::size_t v = 0; v < values.size(); ++v)
    EXPECT_EQ(trimmed[v], rows[v].steps * 0.0001) << values[v];
  EXPECT_LT(std::floor(0.3 / 0.0001), 3000);
}

TEST_F(Transmission, IsFresnelsOnTheGrid) {
  const struct {
    probes::Step step;
    cpx expected;
  } rows[] = {
      {{{1, 0}, {1.5, 0}, {1, 0}, {3, 0}, true}, {0.5, 0}},
      {{{1, 0}, {1.5, 0}, {1, 0}, {0, 1}, true}, {1, -1}},
      {{{1, 0}, {1.5, 0}, {0, 2}, {0, -2}, true}, {1, 0}},       // 0/0
      {{{1, 0}, {1.5, 0}, {1, 0}, {2, 0}, false}, {0.7058, 0}},  // 3/4.25
      {{{2, 0}, {1, 0}, {1, 0}, {1, 0}, false}, {0.8, 0}},       // 4/(1 + 4)
      {{{0, 1}, {1, 0}, {1, 0}, {2, 0}, false}, {0, -2}},        // 2i/(1 - 2)
      {{{1, 0}, {1, 0}, {0, 2}, {0, -2}, false}, {1, 0}},        // 0/0
  };
  std::vector<probes::Step> steps;
  for (const auto& row : rows) steps.push_back(row.step);
  const std::vector<double2> t = probes::transmissions(steps);
  for (std::size_t s = 0; s < steps.size(); ++s) EXPECT_EQ(c(t[s]), rows[s].expected) << s;
}

// Every combination of propagating and evanescent sides: with k0 = 2, a wave of frequency squared
// 1, 9 or 30 propagates in both of the indices 1 and 2, in 2 alone, or in neither.
enum class Amplitude { kDropped, kZero, kUnchanged, kTransmitted };

struct ModeRow {
  double n_i, n_t, kxy_sq;
  Amplitude with_evanescent, without;
  bool updates_flux;
};

const ModeRow kModeRows[] = {
    {1, 2, 1, Amplitude::kTransmitted, Amplitude::kTransmitted, true},  // propagating
    {1, 1, 1, Amplitude::kUnchanged, Amplitude::kUnchanged, true},      // t = 1
    {2, 1, 9, Amplitude::kTransmitted, Amplitude::kDropped, false},     // frustrated
    {1, 2, 9, Amplitude::kTransmitted, Amplitude::kDropped, true},      // coupled in
    {1, 1, 9, Amplitude::kUnchanged, Amplitude::kDropped, false},       // evanescent throughout
    {1, 2, 30, Amplitude::kZero, Amplitude::kDropped, false},           // cut off
    {2, 1, 30, Amplitude::kZero, Amplitude::kDropped, false},           // cut off
    {-1, -2, 9, Amplitude::kZero, Amplitude::kDropped,
     false},  // negative: the relation is the other one
};

cpx kz(double n, double kxy_sq) {
  const double nk0 = n * probes::kK0;
  return nk0 * std::sqrt(cpx(1 - kxy_sq / (nk0 * nk0), 0));
}

TEST_F(Mode, FollowsTheTableOfCases) {
  for (const bool do_evanescent_modes : {true, false}) {
    std::vector<probes::Wave> waves;
    for (const ModeRow& row : kModeRows)
      waves.push_back(
          {{row.n_i, 0}, {row.n_t, 0}, row.kxy_sq, false, {do_evanescent_modes, false, true}});
    const std::vector<device::DeviceMode> modes = probes::modes(waves);
    for (std::size_t w = 0; w < waves.size(); ++w) {
      const ModeRow& row = kModeRows[w];
      const Amplitude amplitude = do_evanescent_modes ? row.with_evanescent : row.without;
      SCOPED_TRACE(w);
      ASSERT_EQ(modes[w].contributes, amplitude != Amplitude::kDropped);
      if (!modes[w].contributes) continue;

      const cpx kz_i = kz(row.n_i, row.kxy_sq);
      const cpx kz_t = kz(row.n_t, row.kxy_sq);
      const cpx t = amplitude == Amplitude::kTransmitted ? 2.0 * kz_i / (kz_i + kz_t)
                    : amplitude == Amplitude::kZero      ? 0.0
                                                         : 1.0;
      const double trim = amplitude == Amplitude::kTransmitted ? 1.5e-4 : 0;  // a notch, both parts
      EXPECT_LE(std::abs(c(modes[w].f_t) - t * c(probes::kAmplitude)), trim);
      EXPECT_EQ(modes[w].updates_flux, row.updates_flux);
      const double flux = row.updates_flux ? kz_t.real() * std::norm(c(modes[w].f_t)) : 0;
      EXPECT_NEAR(modes[w].flux, flux, 1e-14);
      EXPECT_LE(std::abs(c(modes[w].phi_z) - kz_t * probes::kDz), 1e-14);
    }
  }
}

TEST_F(Mode, VerticalIncidenceTakesNoRoot) {
  const auto mode = probes::modes({{{1, 0}, {1.5, 0.25}, 1e9, true, {false, false, true}}})[0];
  EXPECT_EQ(c(mode.phi_z), cpx(1.5, 0.25) * probes::kK0 * probes::kDz);
  EXPECT_EQ(c(mode.f_t), 0.8 * c(probes::kAmplitude));  // 2/(1 + 1.5)
}

// Extinction alone is no index change: nothing is trimmed, and the step absorbs all the same.
TEST_F(Mode, ExtinctionIsNoIndexChange) {
  const auto mode = probes::modes({{{1, 0.1}, {1, 0.25}, 1, false, {false, false, true}}})[0];
  EXPECT_EQ(c(mode.f_t), c(probes::kAmplitude));
  EXPECT_EQ(mode.phi_z.y, 0.25 * probes::kK0 * probes::kDz);
}

TEST_F(Mode, MagneticFieldIsScaledAndFluxIsNot) {
  const probes::Wave electric = {{1, 0}, {2, 0.5}, 1, false, {true, false, true}};
  probes::Wave magnetic = electric;
  magnetic.rules.is_magnetic_field = true;
  const auto modes = probes::modes({electric, magnetic});
  const cpx scaled = c(modes[0].f_t) * (2 / (probes::kK0 * 376.73031346));
  EXPECT_LE(std::abs(c(modes[1].f_t) - scaled), 1e-15 * std::abs(scaled));
  EXPECT_EQ(modes[1].flux, modes[0].flux);
}

}  // namespace
