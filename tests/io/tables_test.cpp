// Tables of fields that have a closed form.
#include <gtest/gtest.h>

#include <cmath>

#include "io/observing.h"
#include "support/errors.h"
#include "wpm/lp01.h"

namespace {

constexpr double kUm = 1e-6;

TableContents observed(Scene& scene, Monitor m, const TempDir& directory) {
  m.file = directory.path("t.csv").string();
  observe(*monitor_of(scene, m), scene);
  return TableContents(directory.read("t.csv"));
}

// A Gaussian of intensity radii a, b, turned by an angle. 4 sigma is twice the 1/e^2 radius along
// each axis. The power is pi a b / 2. Sums over samples are exact to exp(-(pi a/dx)^2/2).
TEST(BeamTable, MeasuresAnEllipticalGaussian) {
  const TempDir directory;
  Scene scene(96, 80, 1, 0.5 * kUm, 0.6 * kUm, kUm, kUm);
  constexpr double kA = 6, kB = 3, kTurn = 30, kX = 1.5, kY = -1.2;
  const double c = std::cos(kTurn * M_PI / 180), s = std::sin(kTurn * M_PI / 180);
  scene.illuminate([&](double x, double y) {
    const double u = c * (x / kUm - kX) + s * (y / kUm - kY);
    const double v = c * (y / kUm - kY) - s * (x / kUm - kX);
    return std::polar(2 * std::exp(-u * u / (kA * kA) - v * v / (kB * kB)), x / kUm);
  });
  Monitor m = monitor(MonitorType::kBeam, directory, "");
  m.x = 1.4;  // nearest sample: 1.5
  m.y = -1.3;
  m.r = 100;
  const TableContents table = observed(scene, m, directory);
  const std::pair<const char*, double> kExpected[] = {{"slice", 0},
                                                      {"z", 0},
                                                      {"power", 4 * M_PI * kA * kB / 2},
                                                      {"peak", 4},
                                                      {"peak_x", kX},
                                                      {"peak_y", kY},
                                                      {"centroid_x", kX},
                                                      {"centroid_y", kY},
                                                      {"width_major", 2 * kA},
                                                      {"width_minor", 2 * kB},
                                                      {"angle", kTurn},
                                                      {"ellipticity", kB / kA},
                                                      {"axis_re", 2 * std::cos(kX)},
                                                      {"axis_im", 2 * std::sin(kX)},
                                                      {"taken_by_edge", 0},
                                                      {"power_in_circle", 4 * M_PI * kA * kB / 2},
                                                      {"flux", scene.flux(0)}};
  for (const auto& [name, value] : kExpected)
    EXPECT_NEAR(table.at(0, name), value, 1e-8 * std::fabs(value) + 1e-8) << name;
  EXPECT_EQ(table.names.size(), std::size(kExpected));
}

// Rows, digits and units as other programs read them; light that the edge took; a circle smaller
// than the beam.
TEST(BeamTable, HasOneHeaderAndNineDigits) {
  const TempDir directory;
  Scene scene(2, 2, 5, 0.5 * kUm, 0.25 * kUm, 2 * kUm, kUm);
  scene.illuminate([](double, double y) { return y == 0 ? cpx(1.0 / 3, 0) : cpx(0); });
  Monitor m = monitor(MonitorType::kBeam, directory, "t.csv");
  m.every = 2;
  m.z1 = 3.5;  // from slice 2 on
  m.r = 0.4;
  RunContext run = context_of(scene);
  run.light_taken = [] { return 0.125 * kUm * kUm; };
  for (int k = 0; k < 5; ++k)
    std::copy(scene.E.begin(), scene.E.begin() + 4, scene.E.begin() + 4 * k);
  observe(*make_monitors({m}, grid_of(scene), run)[0], scene);
  const std::string numbers =
      ",0.0277777778,0,0.0138888889,0.111111111,-0.5,0,-0.25,0,1,0,0,0,0.333333333,0,0.125\n";
  EXPECT_EQ(directory.read("t.csv"),
            "slice [1],z [um],power [amp^2 um^2],flux [amp^2 rad/m],power_in_circle [amp^2 um^2],"
            "peak [amp^2],peak_x [um],peak_y [um],centroid_x [um],centroid_y [um],"
            "width_major [um],width_minor [um],angle [degree],ellipticity [1],axis_re [amp],"
            "axis_im [amp],taken_by_edge [amp^2 um^2]\n2,4" +
                numbers + "4,8" + numbers);
}

// Free space turns the phase of a plane wave by kz z, without approximation. So <x^2> grows by z^2
// <(kx/kz)^2> from a waist. The average is over the power's angular spectrum, exp(-(k w0)^2/2).
TEST(BeamTable, WidthOfAGaussianBeamIsTheRigorousOne) {
  const TempDir directory;
  constexpr double kWaist = 2 * kUm, kAmplitude = 1e5;  // far above the weak plane waves
  Scene scene(128, 128, 4, 0.5 * kUm, 0.5 * kUm, 6 * kUm, kUm);
  scene.illuminate([=](double x, double y) {
    return kAmplitude * std::exp(-(x * x + y * y) / (kWaist * kWaist));
  });
  scene.propagate_by(make_fast_stepper);
  const TableContents table =
      observed(scene, monitor(MonitorType::kBeam, directory, ""), directory);
  double weight = 0, tangent_sq = 0;
  for (int i = 0; i < 20000; ++i) {
    const double k = (i + 0.5) / 20000;  // over k0; the spectrum ends at exp(-79)
    const double w = k * std::exp(-0.5 * std::pow(k * scene.k0 * kWaist, 2));
    weight += w;
    tangent_sq += w * 0.5 * k * k / (1 - k * k);  // half of it along x
  }
  for (int k = 0; k < 4; ++k) {
    const double sigma_sq = kWaist * kWaist / 4 + std::pow(k * scene.dz, 2) * tangent_sq / weight;
    const double width = 4 * std::sqrt(sigma_sq) / kUm;
    EXPECT_NEAR(table.at(static_cast<std::size_t>(k), "width_major"), width, 1e-6 * width) << k;
    EXPECT_NEAR(table.at(static_cast<std::size_t>(k), "width_minor"), width, 1e-6 * width) << k;
  }
}

// Two pi is cut 1.1e-9 short. Each step magnifies a field by that, and a beam's power by twice as
// much: 5e-6 here. Light that fills the domain keeps its power.
TEST(BeamTable, PowerStaysInAUniformMedium) {
  const TempDir directory;
  Scene scene(16, 16, 2001, 0.5 * kUm, 0.4 * kUm, 0.3 * kUm, kUm);
  scene.fill(0, scene.nz, 1.45);
  const double kx = scene.frequency(3);
  scene.illuminate([kx](double x, double) { return 1.0 + 0.5 * std::exp(cpx(0, kx * x)); });
  scene.propagate_by(make_fast_stepper);
  Monitor m = monitor(MonitorType::kBeam, directory, "");
  m.every = 400;
  const TableContents table = observed(scene, m, directory);
  ASSERT_EQ(table.rows.size(), 6U);
  for (std::size_t row = 1; row < 6; ++row)
    EXPECT_NEAR(table.at(row, "power") / table.at(0, "power"), 1.0, 1e-6);
}

// Two Gaussians of waist w. An offset of d couples exp(-d^2/w^2). A tilt by a in a medium couples
// exp(-(k w sin(a)/2)^2).
TEST(OverlapTable, OfGaussiansThatAreOffsetOrTilted) {
  const TempDir directory;
  constexpr double kWaist = 2.5;
  Scene scene(64, 56, 1, 0.4 * kUm, 0.5 * kUm, kUm, kUm);
  scene.fill(0, 1, 1.5);
  scene.illuminate([](double x, double y) {
    return cpx(0, 3) * std::exp(-(x * x + y * y) / std::pow(kWaist * kUm, 2));
  });
  Monitor m = monitor(MonitorType::kOverlap, directory, "");
  m.mode = Monitor::Mode::kGaussian;
  m.waist = kWaist;
  for (const double d : {0.0, 0.7, 2.0})
    for (const double tilt : {0.0, 5.0}) {
      m.x = 0.8 * d;
      m.y = -0.6 * d;
      m.tilty = tilt;
      const TableContents table = observed(scene, m, directory);
      const double turn = scene.k0 * 1.5 * std::sin(tilt * M_PI / 180) * kWaist * kUm / 2;
      const double efficiency = std::exp(-std::pow(d / kWaist, 2) - turn * turn);
      EXPECT_NEAR(table.at(0, "efficiency"), efficiency, 1e-6);
      // The mode's power is its share of the total, 9 pi w^2 / 2.
      EXPECT_NEAR(std::hypot(table.at(0, "overlap_re"), table.at(0, "overlap_im")),
                  std::sqrt(4.5 * M_PI * efficiency) * kWaist, 1e-5);
      EXPECT_NEAR(table.at(0, "phase"), M_PI / 2, d == 0 ? 1e-8 : 1.0);
      EXPECT_TRUE(std::isnan(table.at(0, "effective_index")));  // one slice has no slope
    }
}

// A mode turns its phase by k0 neff per metre, for any number of slices per wavelength. Leaked
// light does not count after ten wavelengths.
TEST(OverlapTable, PhaseGivesTheEffectiveIndexOfAFibre) {
  const TempDir directory;
  Scene scene(48, 48, 60, 0.5 * kUm, 0.5 * kUm, 0.9 * kUm, kUm);
  scene.fill(0, scene.nz, 1.46);
  const Lp01 mode(5 * kUm, 1.46, 1.45, scene.k0);
  for (int k = 0; k < scene.nz; ++k)
    for (int j = 0; j < 48; ++j)
      for (int i = 0; i < 48; ++i) {
        const double rho = std::hypot((i - 24) * scene.dx, (j - 24) * scene.dy);
        scene.E[scene.index(k, j, i)] =
            mode(rho) * std::polar(k < 20 ? 2.0 : 1.0, (k < 20 ? 1.4 : mode.effective_index()) *
                                                           scene.k0 * k * scene.dz) +
            cpx(k < 20 ? 0.1 : 0.0);
      }
  Monitor m = monitor(MonitorType::kOverlap, directory, "");
  m.mode = Monitor::Mode::kLp01;
  m.r = 5;
  m.n = 1.46;
  m.ne = 1.45;
  m.every = 59;
  const TableContents table = observed(scene, m, directory);
  EXPECT_NEAR(table.at(1, "effective_index"), 1.458586, 1e-6);
  EXPECT_NEAR(table.at(1, "efficiency"), 1.0, 1e-12);
  EXPECT_LT(table.at(0, "efficiency"), 0.999);
  m.mode = Monitor::Mode::kInput;
  EXPECT_EQ(observed(scene, m, directory).at(0, "efficiency"), 1.0);
  m.mode = Monitor::Mode::kFile;
  RunContext run = context_of(scene);
  run.read_mode = [&](const Monitor& asked, const Grid&) {
    EXPECT_EQ(asked.line, 7);
    return std::vector<cpx>(scene.E.end() - 48 * 48, scene.E.end());
  };
  m.file = directory.path("t.csv").string();
  observe(*make_monitors({m}, grid_of(scene), run)[0], scene);
  EXPECT_NEAR(TableContents(directory.read("t.csv")).at(1, "efficiency"), 1.0, 1e-12);
}

// A Gaussian along each axis. Its peak is between samples. Its full width at half maximum is w
// sqrt(2 ln 2). A brighter place outside the box does not count.
Scene focus_scene() {
  Scene scene(20, 24, 30, 0.5 * kUm, 0.4 * kUm, 1.5 * kUm, kUm);
  for (int k = 0; k < scene.nz; ++k)
    for (int j = 0; j < scene.ny; ++j)
      for (int i = 0; i < scene.nx; ++i) {
        const double x = scene.dx / kUm * (i - 10) - 0.6, y = scene.dy / kUm * (j - 12) + 0.5;
        const double z = scene.dz / kUm * k - 21.2;
        scene.E[scene.index(k, j, i)] = 3 * std::exp(-x * x / 4 - y * y / 2.25 - z * z / 64);
      }
  scene.E[scene.index(2, 20, 3)] = 100;
  return scene;
}

Monitor focus_monitor(const TempDir& directory) {
  Monitor m = monitor(MonitorType::kFocus, directory, "t.csv");
  m.x1 = -2;
  m.y1 = -2;
  m.y2 = 2;
  return m;
}

TEST(FocusTable, FindsTheBrightestPlaceBetweenSamples) {
  const TempDir directory;
  Scene scene = focus_scene();
  const TableContents table = observed(scene, focus_monitor(directory), directory);
  ASSERT_EQ(table.rows.size(), 1U);
  const double half = std::sqrt(2 * M_LN2);
  // Parabolas of logarithms are exact for Gaussians, except that the history is in single
  // precision.
  const std::tuple<const char*, double, double> kExpected[] = {{"slice", 14, 0},
                                                               {"x", 0.6, 1e-6},
                                                               {"y", -0.5, 1e-6},
                                                               {"z", 21.2, 1e-5},
                                                               {"intensity", 9, 1e-5},
                                                               {"fwhm_x", 2 * half, 1e-6},
                                                               {"fwhm_y", 1.5 * half, 1e-6},
                                                               {"fwhm_z", 8 * half, 1e-5}};
  for (const auto& [name, value, bound] : kExpected)
    EXPECT_NEAR(table.at(0, name), value, bound) << name;
}

TEST(FocusTable, TellsWhatItCannotSee) {
  const TempDir directory;
  Scene scene = focus_scene();
  Monitor m = focus_monitor(directory);
  m.z2 = 6;  // still rising at the end of the box: no fit, and half is before the entry
  EXPECT_EQ(observed(scene, m, directory).at(0, "z"), 6.0);
  m.z2 = std::nullopt;
  Scene beginning(20, 24, 3, scene.dx, scene.dy, scene.dz, kUm);
  std::copy_n(scene.E.begin() + static_cast<std::ptrdiff_t>(scene.index(13, 0, 0)),
              beginning.E.size(), beginning.E.begin());
  EXPECT_TRUE(std::isnan(observed(beginning, m, directory).at(0, "fwhm_z")));
  std::fill(scene.E.begin(), scene.E.end(), cpx(0));
  EXPECT_TRUE(std::isnan(observed(scene, m, directory).at(0, "intensity")));
}

TEST(Tables, GoOnBehindAnySlice) {
  const TempDir directory;
  Scene scene = focus_scene();
  for (std::size_t i = 0; i < scene.E.size(); ++i)
    scene.E[i] *= std::polar(1.0, 1e-3 * static_cast<double>(i));
  for (const MonitorType type : {MonitorType::kBeam, MonitorType::kOverlap, MonitorType::kFocus}) {
    Monitor m = focus_monitor(directory);
    m.type = type;
    m.every = type == MonitorType::kBeam ? 4 : 1;
    expect_resuming(scene, m, directory);
  }
}

struct BadMonitor {
  void (*spoil)(Monitor&);
  const char* message;
};

// Each is an error before the run, with the line.
const BadMonitor kBad[] = {
    {[](Monitor& m) { m.x1 = 30; }, "x1 = 30 lies outside of the domain, -5 to 5 um"},
    {[](Monitor& m) { m.y = -4.9; }, "y = -4.9 lies outside of the domain, -4.8 to 4.8 um"},
    {[](Monitor& m) { m.z2 = NAN; }, "z2 = nan lies outside of the domain, 0 to 45 um"},
    {[](Monitor& m) { m.z1 = 9, m.z2 = 3; }, "covers no sample"},
    {[](Monitor& m) { m.every = 0; }, "covers no sample"},
    {[](Monitor& m) { m.file = "none/such.csv"; }, "cannot be written: No such file"},
    {[](Monitor& m) { m.file = "./E_cpu.csv"; }, "./E_cpu.csv is another output of this run"},
    {[](Monitor& m) { m.type = MonitorType::kOverlap, m.mode = Monitor::Mode::kFile; },
     "mode = file cannot be read"},
    {[](Monitor& m) { m.type = MonitorType::kOverlap, m.mode = Monitor::Mode::kLp01; },
     "mode = lp01 needs r above 0"},
    {[](Monitor& m) {
       m.type = MonitorType::kOverlap, m.mode = Monitor::Mode::kGaussian, m.waist = 1e-3,
       m.x = 0.25;
     },
     "the mode is 0 on all samples"},
};

TEST(Monitors, ThatCannotBeAreErrorsWithTheirLine) {
  const TempDir directory;
  Scene scene(20, 24, 30, 0.5 * kUm, 0.4 * kUm, 1.5 * kUm, kUm);
  RunContext run = context_of(scene);
  run.outputs = {"E_cpu.csv"};
  for (const auto& [spoil, message] : kBad) {
    Monitor m = monitor(MonitorType::kBeam, directory, "t.csv");
    m.y = 0;
    spoil(m);
    EXPECT_ERROR(make_monitors({m}, grid_of(scene), run),
                 std::string("^a.cfg: line 7: .*") + message);
  }
#ifndef ZERITH_HAS_HDF5
  EXPECT_ERROR(monitor_of(scene, monitor(MonitorType::kField, directory, "f.vtkhdf")),
               "line 7: type = field needs HDF5, .*libhdf5-dev");
#endif
  const Monitor m = monitor(MonitorType::kBeam, directory, "t.csv");
  EXPECT_ERROR(make_monitors({m, m}, grid_of(scene), run), "another output");
  EXPECT_FALSE(directory.has("t.csv"));
}

}  // namespace
