// The example that goes from a configuration to a curve: a lens in front of a fibre.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <sstream>

#include "support/process.h"

namespace {

// Coupling of a Gaussian beam of waist w0 into a mode of waist wm, dz from the beam's waist
// (W. B. Joyce and B. C. DeLoach, Appl. Opt. 23, 4187 (1984)):
// 4 / ((w0/wm + wm/w0)^2 + (lambda dz / (pi w0 wm))^2).
double coupling(double w0, double wm, double dz, double lambda) {
  return 4 / (std::pow(w0 / wm + wm / w0, 2) + std::pow(lambda * dz / (M_PI * w0 * wm), 2));
}

// A sweep of the gap gives the closed form of Gaussian beams: the waist after a thin lens (Saleh &
// Teich 3.2), the fibre's mode as a Gaussian (Marcuse 1977: w/a = 0.65 + 1.619/V^1.5 + 2.879/V^6).
// The mode's true shape costs some 0.4 %, spherical aberration moves the curve by up to
// (7/6) w^2/f = 950 nm, and the curve falls by 0.02 a micrometre where it is steepest. A coarser
// grid than the file's, for the sake of time, takes less than 0.01.
TEST(LensOnFibre, SweepOfTheGapIsTheCurveOfGaussianBeams) {
  const TempDir directory;
  const std::string example = "lens-on-fibre";
  const RunResult result = run_zerith(
      directory, {"-q", "-p", "--fast", "-i", ZERITH_SOURCE_DIR "/examples/" + example + ".cfg",
                  "--set", "global.nx=112", "--set", "global.ny=112", "--set", "global.nz=200",
                  "--sweep", "layer3.z=30000,50000,80000", "--jobs", "2"});
  EXPECT_EQ(std::pair(result.status, result.err), std::pair(0, std::string()));

  const double lambda = 850, waist = 7000, focal = 60000, core = 2000;
  const double rayleigh = M_PI * waist * waist / lambda;
  const double place = focal / (1 + std::pow(focal / rayleigh, 2)) - 5000 / 1.5;
  const double w0 = waist * (focal / rayleigh) / std::hypot(1, focal / rayleigh);
  const double V = 2 * M_PI / lambda * core * std::sqrt(1.46 * 1.46 - 1.45 * 1.45);
  const double wm = core * (0.65 + 1.619 / std::pow(V, 1.5) + 2.879 / std::pow(V, 6));

  std::istringstream table(directory.read("sweep.csv"));
  std::string line;
  std::getline(table, line);
  std::istringstream header(line);
  int column = -1, columns = 0;
  for (std::string name; std::getline(header, name, ','); ++columns)
    if (name.starts_with("fibre.efficiency")) column = columns;
  ASSERT_GT(column, 0) << line;
  std::map<double, double> found;
  while (std::getline(table, line)) {
    const auto values = csv_rows(line).at(0);
    ASSERT_GT(values.size(), static_cast<std::size_t>(column)) << line;
    found[values[0]] = values[static_cast<std::size_t>(column)];
  }
  ASSERT_EQ(found.size(), 3U);
  for (const auto& [gap, efficiency] : found)
    EXPECT_NEAR(efficiency, coupling(w0, wm, gap - place, lambda), 0.04) << gap;
  EXPECT_GT(found[50000], 0.99);
}

}  // namespace
