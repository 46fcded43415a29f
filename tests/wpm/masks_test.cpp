// Masks on the field of a slice: the absorbing edge and screens.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "support/process.h"
#include "wpm/edge.h"
#include "wpm/screens.h"
#if ZERITH_HAS_HDF5
#include "data/hdf5_writer.h"
#include "support/errors.h"
#endif

namespace {

// 20 x 15 samples of 0.5 by 0.8 um (10 by 12 um), and 4 slices.
Grid grid(double dz = 0.4) {
  struct_sysOptions so;
  so.nx = 20, so.ny = 15, so.nz = 4;
  so.dx = 0.5, so.dy = 0.8, so.dz = dz;
  so.f = 1e-6;
  return Grid(so);
}

std::vector<cpx> unit_field() {
  return std::vector<cpx>(300, 1.0);
}

// The loss over a distance does not depend on the number of steps. The field of slice 0 has no
// loss.
TEST(Edge, TakesTheSameInOneStepAsInTen) {
  std::vector<cpx> once = unit_field();
  EdgeMask(grid(1.0), 3e-6, 1e-6).apply(1, once.data());
  std::vector<cpx> often = unit_field();
  EdgeMask fine(grid(0.1), 3e-6, 1e-6);
  for (int k = 0; k <= 10; ++k) fine.apply(k, often.data());
  for (std::size_t s = 0; s < 300; ++s) EXPECT_LE(std::abs(once[s] - often[s]), 1e-14);
  EXPECT_EQ(once[7 * 20 + 10], 1.0);  // no loss in the middle
}

// The loss is alike in x and y and zero at the inner border. Rates add up in the corners. At the
// side, u = 1, the rate is A/w (1/0.3)^2 / 1.5208 with A = 1.5 + 3/3.
TEST(Edge, RisesTowardsEverySide) {
  EXPECT_EQ(edge_absorption(0.0, 3e-6, 1e-6), 0.0);
  EXPECT_NEAR(edge_absorption(3e-6, 3e-6, 1e-6) * 3e-6, 2.5 * (100.0 / 9) / 1.52079, 1e-3);
  std::vector<cpx> field = unit_field();
  EdgeMask(grid(), 3e-6, 1e-6).apply(1, field.data());
  const auto loss = [&](int i, int j) {
    return -std::log(field[static_cast<std::size_t>(j * 20 + i)].real());
  };
  for (int i = 0; i < 20; ++i)  // i = 0 is on the side, its neighbours at equal distances
    EXPECT_NEAR(loss(i, 7),
                edge_absorption(3e-6 - 0.5e-6 * std::min(i, 20 - i), 3e-6, 1e-6) * 0.4e-6, 1e-12);
  for (int j = 0; j < 15; ++j)  // odd: the side is between the last and the first
    EXPECT_NEAR(loss(10, j),
                edge_absorption(3e-6 - 0.8e-6 * std::min(j + 0.5, 14.5 - j), 3e-6, 1e-6) * 0.4e-6,
                1e-12);
  EXPECT_NEAR(loss(1, 2), loss(1, 7) + loss(10, 2), 1e-14);
}

// The strength is the rate's integral: 1.5 + width / (3 wavelength), at least 2 and at most 5.
TEST(Edge, StrengthFollowsItsWidthInWavelengths) {
  struct Case {
    double width, strength;
  };
  for (const Case& c : {Case{0.5, 2}, Case{3, 2.5}, Case{6, 3.5}, Case{30, 5}}) {
    double sum = 0.0;
    for (int i = 0; i < 10000; ++i)
      sum += edge_absorption((i + 0.5) / 10000 * c.width, c.width, 1.0) * c.width / 10000;
    EXPECT_NEAR(sum, c.strength, 1e-4) << c.width;
  }
}

TEST(Edge, CountsThePowerThatItTakes) {
  EdgeMask edge(grid(), 4e-6, 1e-6);
  std::vector<cpx> field = unit_field();
  const double area = 0.5e-6 * 0.8e-6;
  for (const int k : {1, 2}) {
    edge.apply(k, field.data());
    double left = 0.0;
    for (const cpx& e : field) left += std::norm(e) * area;
    EXPECT_NEAR(edge.taken() / (300 * area - left), 1.0, 1e-13);
  }
  edge.set_taken(5.0);
  edge.apply(0, field.data());
  EXPECT_EQ(edge.taken(), 5.0);
}

TEST(Edge, WidthEndsAtHalfTheDomain) {
  std::vector<cpx> field = unit_field();
  EdgeMask(grid(), 5e-6, 1e-6).apply(1, field.data());
  EXPECT_EQ(field[7 * 20 + 10], 1.0);
  EXPECT_ERROR(EdgeMask(grid(), 5.1e-6, 1e-6), "wider than half");
  Grid line = grid();  // an axis of one sample has no sides
  line.ny = 1;
  std::vector<cpx> row(20, 1.0);
  EdgeMask(line, 5e-6, 1e-6).apply(1, row.data());
  EXPECT_EQ(row[10], 1.0);
  EXPECT_LT(std::abs(row[0]), 0.5);
}

struct_layer screen() {
  struct_layer l;
  l.t = SCREEN;
  l.line = 9;
  return l;
}

std::vector<cpx> behind(const std::vector<Screen>& screens, int k,
                        const std::string& configuration = "a.cfg") {
  std::vector<cpx> field = unit_field();
  ScreenMask(grid(), screens, configuration).apply(k, field.data());
  return field;
}

double open_area(const std::vector<cpx>& field) {
  double sum = 0.0;
  for (const cpx& e : field) sum += e.real() * 0.5 * 0.8;
  return sum;
}

// With levels the area of a hole is that of the figure, to half a step of each sample on its rim.
// That is 0.4/32 um^2 each, of either sign.
TEST(Screens, HolesHaveTheirAreaInLevels) {
  struct_layer round = screen();
  round.r = 3.1, round.x = 0.3, round.offsety = -0.6, round.offsetx = 0.2;
  const double area = M_PI * 3.1 * 3.1;
  EXPECT_GT(std::fabs(open_area(behind({{2, round}}, 2)) - area), 0.05);  // whole samples
  round.levels = 16;
  EXPECT_NEAR(open_area(behind({{2, round}}, 2)), area, 0.05);
  const std::vector<cpx> field = behind({{2, round}}, 2);
  for (const cpx& e : field) EXPECT_EQ(e.real() * 16, std::round(e.real() * 16));
  EXPECT_EQ(field[7 * 20 + 11], 1.0);
  EXPECT_EQ(field[0], 0.0);

  struct_layer slit = screen();
  slit.wx = 3.3, slit.wy = 4.9, slit.levels = 1000;
  EXPECT_NEAR(open_area(behind({{2, slit}}, 2)), 3.3 * 4.9, 0.01);
}

TEST(Screens, StandOnTheirSliceAloneAndMultiply) {
  struct_layer round = screen();
  round.r = 2, round.transmission = 0.25;
  struct_layer plate = screen();
  plate.transmission = 0.5;
  const std::vector<Screen> screens = {{2, round}, {2, plate}};
  EXPECT_EQ(behind(screens, 1), unit_field());
  const std::vector<cpx> field = behind(screens, 2);
  EXPECT_EQ(field[7 * 20 + 10], 0.5);
  EXPECT_EQ(field[7 * 20], 0.125);
  // A sample with its middle on the rim is open.
  EXPECT_EQ(field[7 * 20 + 14], 0.5);
  EXPECT_EQ(field[7 * 20 + 15], 0.125);
  for (const int slice : {4, -1})
    EXPECT_ERROR(behind({{slice, round}}, 1), "a.cfg: line 9: the screen lies behind the domain");
}

#if ZERITH_HAS_HDF5
TEST(Screens, MaskOfAFileHasItsTransmissionAround) {
  const TempDir folder;
  const std::vector<cpx> mask = {1.0, {0.0, 1.0}, -1.0, 0.5, 0.0, 0.25};  // 3 columns, 2 rows
  {
    Hdf5Writer file(folder.path("mask.h5").string());
    file.write_compound("m", {2, 3}, mask.data());
  }
  struct_layer l = screen();
  l.file = "mask.h5", l.dataset = "/m", l.transmission = 0.75;
  l.file_dx = 0.5, l.file_dy = 0.8, l.offsetx = 1;
  const std::vector<cpx> field = behind({{0, l}}, 0, folder.path("a.cfg").string());
  EXPECT_EQ(field[6 * 20 + 12], mask[1]);
  EXPECT_EQ(field[7 * 20 + 11], mask[3]);
  EXPECT_EQ(field[8 * 20 + 11], 0.75);
  l.dataset = "/n";
  EXPECT_ERROR(behind({{0, l}}, 0, folder.path("a.cfg").string()), "a.cfg: line 9: .*it has /m");
}
#endif

}  // namespace
