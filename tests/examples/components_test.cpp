// The examples of curved, moved, graded and loaded components: each is compared with the figure in
// its head.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/process.h"

#ifdef ZERITH_HAS_HDF5
#include <hdf5.h>
#endif

namespace {

using Rows = std::vector<std::vector<double>>;

// Runs an example with --fast, the cross-section options given and a key's value replaced.
Rows run_example(TempDir& directory, const std::string& name, std::vector<std::string> options,
                 const std::string& set = "") {
  run_shell(directory, "cp '" ZERITH_SOURCE_DIR "/examples/" + name + ".cfg' .");
  options.insert(options.begin(), {"-q", "-p", "--fast", "-i", name + ".cfg"});
  if (!set.empty()) options.insert(options.end(), {"--set", set});
  const RunResult run = run_zerith(directory, options);
  EXPECT_EQ(run.status, 0) << name;
  EXPECT_EQ(run.err, "") << name;
  Rows rows = csv_rows(directory.read("E_cpu.csv"));
  if (!rows.empty() && rows.back().empty()) rows.pop_back();  // the line that ends a plane
  return rows;
}

Rows axial_plane(const std::string& name, int row, const std::string& set = "") {
  TempDir directory;
  return run_example(directory, name, {"-x", "1", "-l", std::to_string(row)}, set);
}

// |E|^2 in a column as twice the mean square of its real part over so many slices about each.
std::vector<double> intensity(const Rows& field, std::size_t column, int slices) {
  std::vector<double> result;
  for (std::size_t k = 0; k + static_cast<std::size_t>(slices) <= field.size(); ++k) {
    double sum = 0.0;
    for (std::size_t i = k; i < k + static_cast<std::size_t>(slices); ++i)
      sum += 2 * field[i].at(column) * field[i][column] / slices;
    result.push_back(sum);
  }
  return result;
}

struct Peak {
  double place, value;
};
// The brightest place of a column, counted in slices to the middle of the window.
Peak brightest(const Rows& field, std::size_t column, int slices) {
  const std::vector<double> values = intensity(field, column, slices);
  const auto most = std::max_element(values.begin(), values.end());
  return {static_cast<double>(most - values.begin()) + (slices - 1) / 2.0, *most};
}

// The theory for weak coupling is good to some per cent (tests/physics has the formula); light that
// no core confines moves the brightest place of a single column by as much.
TEST(Examples, CouplerExchangesItsLight) {
  const Rows field = axial_plane("coupler", 24);
  constexpr std::size_t kLeft = 18, kRight = 30;
  const std::vector<double> left = intensity(field, kLeft, 11),
                            right = intensity(field, kRight, 11);
  const Peak crossed = brightest(field, kRight, 11);
  EXPECT_NEAR(crossed.place * 250 / 182100, 1, 0.07);
  EXPECT_NEAR(crossed.value / left[0], 1, 0.1);
  EXPECT_LT(right[0] / left[0], 0.05);
  EXPECT_LT(left[static_cast<std::size_t>(crossed.place) - 5] / left[0], 0.05);

  // One core alone keeps its light.
  const std::vector<double> alone =
      intensity(axial_plane("coupler", 24, "layer3.n=1.45"), kLeft, 11);
  EXPECT_NEAR(alone.at(720) / alone.at(0), 1, 0.1);
}

#if ZERITH_HAS_HDF5
// Twice across is back again, in twice the way; on a coarser grid, for the time it takes.
TEST(Examples, LongCouplerBringsItsLightBack) {
  TempDir directory;
  const Rows field =
      run_example(directory, "long-coupler",
                  {"-x", "1", "-l", "32", "--set", "global.nx=64", "--set", "global.ny=64"});
  ASSERT_EQ(field.size(), 3200U);
  const auto left = intensity(field, 26, 11), right = intensity(field, 38, 11);
  const auto most = [](auto from, auto to) { return std::max_element(from, to) - from; };
  const auto across = most(right.begin(), right.begin() + 1000);
  const auto back = 700 + most(left.begin() + 700, left.begin() + 2100);
  EXPECT_NEAR(static_cast<double>(across) * 0.25 / 182.1, 1, 0.1);
  EXPECT_NEAR(static_cast<double>(back) / static_cast<double>(across), 2, 0.15);
  EXPECT_NEAR(left.at(static_cast<std::size_t>(back)) / left.at(0), 1, 0.15);
  EXPECT_LT(right.at(static_cast<std::size_t>(back)) / left.at(0), 0.05);
  EXPECT_TRUE(directory.has("long-coupler.vtkhdf"));
}
#endif

// The quarter pitch and the waists are parabolic; the next order brings the focus nearer by
// some (g W)^2/4 of the way, the window has 8 slices, and a tenth of the light is aside.
TEST(Examples, GrinFocusesAfterAQuarterPitch) {
  const Peak focus = brightest(axial_plane("grin", 32), 32, 8);
  EXPECT_NEAR(focus.place * 250 / 39270, 1, 0.03);
  EXPECT_NEAR(focus.value / std::pow(4000.0 / 1326, 2), 1, 0.1);
}

// The field after the bars is real: its spectrum is that of the pattern. Samples represent their
// cells of a 128th of the period, which is (pi m/128)^2/3 too much.
TEST(Examples, EqualBarsSendNoLightStraightOn) {
  TempDir directory;
  const std::vector<double> field = run_example(directory, "equal-bars", {"-l", "1"}).at(0);
  ASSERT_EQ(field.size(), 512U);
  double all = 0.0;
  for (const double e : field) all += e * e / 512;
  const auto order = [&](int m) {
    double re = 0.0, im = 0.0;
    for (int i = 0; i < 512; ++i) {
      re += field[std::size_t(i)] * std::cos(2 * M_PI * 4 * m * i / 512) / 512;
      im += field[std::size_t(i)] * std::sin(2 * M_PI * 4 * m * i / 512) / 512;
    }
    return (re * re + im * im) / all;
  };
  for (const int m : {1, -1}) EXPECT_NEAR(order(m), 0.405285, 1e-4);
  for (const int m : {3, -3}) EXPECT_NEAR(order(m), 0.045032, 1e-4);
  for (const int m : {0, 2, -4}) EXPECT_LT(order(m), 1e-10);
}

// The middle of the beam where the lens focuses, weighted by its square so that what the faces
// throw elsewhere counts little; it still draws the middle by some per cent.
TEST(Examples, TiltedLensMovesItsFocus) {
  const auto middle = [](const std::string& set) {
    const Rows field = axial_plane("tilted-lens", 32, set);
    double sum = 0.0, moment = 0.0;
    for (std::size_t i = 0; i < 64; ++i) {
      const double weight = std::pow(intensity(field, i, 4).at(82), 2);
      sum += weight;
      moment += weight * (static_cast<double>(i) - 32) * 250;
    }
    return moment / sum;
  };
  EXPECT_NEAR(middle(""), 10000 * std::sin(5 * M_PI / 180), 70);
  EXPECT_NEAR(middle("layer1.tiltx=-5"), -10000 * std::sin(5 * M_PI / 180), 70);
  EXPECT_NEAR(middle("layer1.tiltx=0"), 0, 5);
}

#ifdef ZERITH_HAS_HDF5
// As a graded rod in x; in y the beam spreads as in glass, by sqrt(1 + (z/zR)^2).
TEST(Examples, FromFileFocusesInOneDirection) {
  TempDir directory;
  std::vector<double> indices;
  for (int i = 0; i < 17; ++i) indices.push_back(1.5 * std::sqrt(1 - std::pow(0.04 * (i - 8), 2)));
  const hsize_t shape[] = {1, 1, 17};
  const hid_t file =
      H5Fcreate(directory.path("plate.h5").c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT);
  const hid_t space = H5Screate_simple(3, shape, nullptr);
  const hid_t set =
      H5Dcreate2(file, "n", H5T_NATIVE_DOUBLE, space, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT);
  H5Dwrite(set, H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, indices.data());
  H5Dclose(set), H5Sclose(space), H5Fclose(file);
  const Peak focus = brightest(run_example(directory, "from-file", {"-x", "1", "-l", "32"}), 32, 8);
  EXPECT_NEAR(focus.place * 250 / 39270, 1, 0.03);
  const double spread = std::hypot(1, 39270 / (M_PI * 4000 * 4000 * 1.5 / 1000));
  EXPECT_NEAR(focus.value / (4000.0 / 1326 / spread), 1, 0.05);
}
#endif

}  // namespace
