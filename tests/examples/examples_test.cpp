// Every file of examples/, run by the real program: the results must be those of its head.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "support/process.h"

namespace {

using Rows = std::vector<std::vector<double>>;

std::filesystem::path folder() {
  return std::filesystem::path(ZERITH_SOURCE_DIR) / "examples";
}

// Runs an example with the plane options given, --fast and without a warning. Unchanged, it
// is compared with the reference; a variation, with text swapped for another, is not.
TempDir& run_example(TempDir& directory, const std::string& name, std::vector<std::string> options,
                     const std::string& text = "", const std::string& by = "") {
  const RunResult copied =
      run_shell(directory, "cp '" + (folder() / (name + ".cfg")).string() + "' run.cfg");
  EXPECT_EQ(copied.status, 0) << copied.err;
  if (!text.empty()) {
    std::string file = directory.read("run.cfg");
    const std::size_t place = file.find(text);
    EXPECT_NE(place, std::string::npos) << name << ".cfg has no " << text;
    if (place != std::string::npos)
      directory.write("run.cfg", file.replace(place, text.size(), by));
  }
  options.insert(options.begin(), {"-i", "run.cfg", "-p"});
  const auto run = [&] {
    const RunResult result = run_zerith(directory, options);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    return std::vector<std::string>{directory.read("E_cpu.csv"), directory.read("EFlux_cpu_Z.csv")};
  };
  std::vector<std::string> reference;
  if (text.empty()) reference = run();
  options.emplace_back("--fast");
  const std::vector<std::string> fast = run();
  for (std::size_t file = 0; file < reference.size(); ++file)
    EXPECT_EQ(differing_values(reference[file], fast[file]), 0U) << name;
  return directory;
}

// The plane through the axis along z, a row a slice.
Rows axial_plane(const std::string& name, int row, const std::string& text = "",
                 const std::string& by = "") {
  TempDir directory;
  return csv_rows(run_example(directory, name, {"-x", "1", "-l", std::to_string(row)}, text, by)
                      .read("E_cpu.csv"));
}

// |E|^2 of each sample as twice the mean square of its real part over slices begin..end-1.
std::vector<double> intensity(const Rows& field, std::size_t begin, std::size_t end) {
  std::vector<double> mean(field.at(0).size(), 0.0);
  for (std::size_t k = begin; k < end; ++k)
    for (std::size_t i = 0; i < mean.size(); ++i)
      mean[i] += 2 * field.at(k)[i] * field[k][i] / static_cast<double>(end - begin);
  return mean;
}

double moment(const std::vector<double>& weights, double origin, int order) {
  double sum = 0.0;
  for (std::size_t i = 0; i < weights.size(); ++i)
    sum += weights[i] * std::pow(static_cast<double>(i) - origin, order);
  return sum / std::accumulate(weights.begin(), weights.end(), 0.0);
}
double centre(const std::vector<double>& weights) {
  return moment(weights, 0, 1);
}
double width(const std::vector<double>& weights) {
  return std::sqrt(moment(weights, centre(weights), 2));
}

// The index of the wave in one column of a field: where the spectrum of its slices from first on,
// under a sine-squared window, is highest.
double index_along_z(const Rows& field, std::size_t column, std::size_t first,
                     double dz_by_lambda) {
  double best = 0.0;
  double highest = 0.0;
  for (double n = 1.40; n < 1.55; n += 0.0002) {
    double real = 0.0;
    double imaginary = 0.0;
    const auto count = static_cast<double>(field.size() - 1 - first);
    for (std::size_t k = first; k + 1 < field.size(); ++k) {
      const double t = static_cast<double>(k - first);
      const double value = field[k][column] * std::pow(std::sin(M_PI * (t + 0.5) / count), 2);
      real += value * std::cos(2 * M_PI * n * dz_by_lambda * t);
      imaginary += value * std::sin(2 * M_PI * n * dz_by_lambda * t);
    }
    if (std::hypot(real, imaginary) <= highest) continue;
    highest = std::hypot(real, imaginary);
    best = n;
  }
  return best;
}

}  // namespace

// Some test of this folder names each of them.
TEST(Examples, EachIsTested) {
  const TempDir directory;
  const std::string tests =
      run_shell(directory, "cat '" ZERITH_SOURCE_DIR "'/tests/examples/*_test.cpp").out;
  int found = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder())) {
    const std::string name = entry.path().stem().string();
    EXPECT_TRUE(tests.find('"' + name + '"') != std::string::npos ||
                tests.find(name + ".cfg") != std::string::npos)
        << "no test runs " << name;
    ++found;
  }
  EXPECT_GE(found, 12);
}

// Fresnel at 30 degrees, 1 to 1.5, TE (Born & Wolf 1.5.3): T = 0.94220 in either direction. t is
// rounded down by up to 1e-4, T by up to 2e-4/t of itself; t is 0.760 going in and 1.240 going out.
TEST(Examples, HomogLosesFluxAtItsFacesAndWhereItAbsorbs) {
  TempDir directory;
  const std::vector<double> flux =
      csv_rows(run_example(directory, "homog", {}).read("EFlux_cpu_Z.csv")).at(1);
  ASSERT_EQ(flux.size(), 80U);
  const double T = 0.94220;
  const double slice = std::exp(-2 * (2 * M_PI / 1000) * 0.02 * 100);
  for (std::size_t k = 0; k < 20; ++k) EXPECT_NEAR(flux[k], 1.0, 1e-5);  // six digits, two pi cut
  for (std::size_t k = 20; k <= 40; ++k) EXPECT_NEAR(flux[k], T - 1.3e-4, 1.4e-4);
  for (std::size_t k = 41; k < 60; ++k) EXPECT_NEAR(flux[k] / flux[k - 1], slice, 3e-6);
  for (std::size_t k = 60; k < 80; ++k)
    EXPECT_NEAR(flux[k] / (T * T * std::pow(slice, 20)), 1.0, 2e-4 / 0.760 + 2e-4 / 1.240);
}

// Orders 0 and +-1 have kz of k0 and 0.8 k0: after 5 wavelengths, 60 slices, they are in phase,
// half way in opposite phase. The second order, of 1.2 k0, has decayed by exp(-0.663 k0 1750 nm) =
// 5e-6 at slice 39; the values have six digits.
TEST(Examples, GratingImagesItself) {
  const Rows field = axial_plane("grating", 32);
  const std::vector<double>& here = field.at(39);
  for (std::size_t i = 0; i < 64; ++i) {
    EXPECT_NEAR(field.at(99)[i], here[i], 1e-5);
    EXPECT_NEAR(field.at(69)[(i + 32) % 64], -here[i], 1e-5);
  }
  const auto [least, most] = std::minmax_element(here.begin(), here.end());
  EXPECT_GT(*most - *least, 0.3);  // an image, not a uniform field
}

// LP01 by the characteristic equation of the step fibre (Snyder & Love 14-4): 1.47687. The core's
// stairs take 0.0007 off, the spectrum's peak over 80 slices is good to a hundredth of its width,
// 0.0006, and the method's own error is of that order.
TEST(Examples, WaveguideHoldsTheBeam) {
  const Rows guided = axial_plane("waveguide", 20);
  const double launched = width(intensity(guided, 0, 10));
  EXPECT_LT(width(intensity(guided, 90, 100)), 1.1 * launched);
  EXPECT_NEAR(index_along_z(guided, 20, 20, 0.2), 1.47687, 0.003);

  // Without the core the beam spreads as a Gaussian beam does; the domain cuts its outer 2 %.
  const Rows free = axial_plane("waveguide", 20, "n = 1.5 ", "n = 1.45 ");
  const double rayleigh = M_PI * 1.45 * (700.0 * 700.0 * M_PI) / 1000;
  EXPECT_NEAR(width(intensity(free, 90, 100)) / launched, std::hypot(1, 18900 / rayleigh), 0.15);
}

TEST(Examples, TaperSqueezesTheBeam) {
  const Rows field = axial_plane("taper", 20);
  EXPECT_LT(width(intensity(field, 72, 80)), 0.5 * width(intensity(field, 0, 8)));
  EXPECT_GT(intensity(field, 72, 80)[20], 5 * intensity(field, 0, 8)[20]);
}

// The waist of a Gaussian beam after a thin lens (Saleh & Teich 3.2-15). For this shape of lens
// the rays at the waist's radius meet (7/6) w^2/f before the paraxial focus; a window has 4 slices,
// of 125 nm, and the lens is made of such slices.
TEST(Examples, LensFocusesWherePredicted) {
  const Rows field = axial_plane("lens", 20);
  const double f = 3750 / 0.5;
  const double w = 940 * std::sqrt(M_PI);
  const double rayleigh = M_PI * w * w / 500;
  const double waist = 1250 - 1250 / 1.5 + f / (1 + f * f / (rayleigh * rayleigh));
  double brightest = 0.0;
  double place = 0.0;
  for (std::size_t k = 10; k + 4 <= 80; k += 4) {
    const double here = intensity(field, k, k + 4)[20];
    if (here <= brightest) continue;
    brightest = here;
    place = (static_cast<double>(k) + 1.5) * 125;
  }
  EXPECT_LT(place, waist + 250 + 125);
  EXPECT_GT(place, waist - (7.0 / 6) * w * w / f - 250 - 125);
  // Two faces at 0.96 each; the rim and the stairs throw some light elsewhere or on the axis.
  const double gain = 0.96 * 0.96 * (1 + rayleigh * rayleigh / (f * f));
  EXPECT_NEAR(brightest / gain, 1.0, 0.2);
}

TEST(Examples, SplitterLeadsTheBeamSideways) {
  const Rows field = axial_plane("splitter", 20);
  for (std::size_t k = 0; k < 80; k += 8) {
    const double shape =
        (std::atan(2 * M_PI / 80 * (static_cast<double>(k) + 3.5 - 40)) + std::atan(M_PI)) /
        (M_PI / 2);
    const double core = 20 + (-800 + 1000 * shape) / 200;  // in samples
    EXPECT_NEAR(centre(intensity(field, k, k + 8)), core, 707.0 / 200) << "slice " << k;
  }
  EXPECT_GT(centre(intensity(field, 72, 80)), 24);
  const Rows straight = axial_plane("splitter", 20, "n = 1.6", "n = 1.45");
  EXPECT_NEAR(centre(intensity(straight, 40, 48)), 16, 0.5);  // later its edge meets the domain's
}

// The share of light in the core at the end is what the mode takes of the beam, times the part of
// the mode that runs in the core. With Gaussian beams: (2 w w' / (w^2 + w'^2))^2 and
// 1 - exp(-2 a^2/w'^2), w' = 1097 nm for this guide (Marcuse 1977). Aberrations of the lens and
// light that stays in the domain outside the mode are left out.
TEST(Examples, SystemCouplesLightIntoTheGuide) {
  const auto share_in_core = [](const std::string& text, const std::string& by) {
    TempDir directory;
    const Rows rows =
        csv_rows(run_example(directory, "system", {"-l", "-1"}, text, by).read("E_cpu.csv"));
    double core = 0.0;
    double all = 0.0;
    for (std::size_t k = 128; k < 160; ++k)
      for (std::size_t j = 0; j < 40; ++j)
        for (std::size_t i = 0; i < 40; ++i) {
          const double e = rows.at(k * 41 + j).at(i);  // an empty row after each plane
          all += e * e;
          if (std::hypot(static_cast<double>(i) - 20, static_cast<double>(j) - 20) <= 4)
            core += e * e;
        }
    return core / all;
  };
  const double mode = 1097;
  const auto expected = [mode](double w) {
    return std::pow(2 * w * mode / (w * w + mode * mode), 2) *
           (1 - std::exp(-2 * 1000 * 1000 / (mode * mode)));
  };
  const double w = 1500 * std::sqrt(M_PI);
  const double rayleigh = M_PI * w * w / 1000;
  EXPECT_NEAR(share_in_core("", ""), expected(w / std::hypot(1, rayleigh / 8000)), 0.08);
  EXPECT_NEAR(share_in_core("r = -4000\nn = 1.5", "r = -4000\nn = 1"), expected(w), 0.08);
}
