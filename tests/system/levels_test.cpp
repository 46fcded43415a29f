// Voxels that a face cuts: volumes in closed form, and the same bodies on a finer grid.
#include <gtest/gtest.h>

#include <cmath>

#include "painted.h"
#include "system/shares.h"

namespace {

constexpr int kMany = 65536;

struct_layer body(component t, double z, int levels) {
  return {.t = t, .z = z, .n = 2, .k = 0.02, .ne = 1, .ke = 0.01, .levels = levels};
}

TEST(SharedArea, OfARectangleAndADisc) {
  struct Case {
    double x1, x2, y1, y2, radius_squared, area;
  };
  const double segment = M_PI / 3 - std::sqrt(3) / 4;  // of the unit disc beyond x = 1/2
  const Case kCases[] = {
      {-1, 1, -2, 2, 9, 8},  {-3, 3, -3, 3, 4, 4 * M_PI}, {0, 3, -3, 3, 4, 2 * M_PI},
      {0, 5, 0, 5, 4, M_PI}, {0.5, 2, -2, 2, 1, segment}, {-2, 0.5, -2, 2, 1, M_PI - segment},
      {2, 3, -1, 1, 4, 0},   {1, 2, 1, 2, 1.9, 0},        {-1, 1, -1, 1, 0, 0},
      {-1, 1, -1, 1, -5, 0}, {-1, 1, -1, 1, HUGE_VAL, 4}};
  for (const Case& c : kCases)
    EXPECT_NEAR(
        shared_area({{{c.x1, c.y1}, {c.x2, c.y1}, {c.x2, c.y2}, {c.x1, c.y2}}}, c.radius_squared),
        c.area, 1e-14 * (1 + c.area))
        << c.x1 << ' ' << c.x2 << ' ' << c.radius_squared;
}

// A bend, whose place Simpson's rule only finds by halving, and a parabola, on which it is exact.
TEST(MeanOverDepth, KeepsItsTolerance) {
  EXPECT_NEAR(mean_over_depth([](double t) { return t * t; }, 1), 1.0 / 12, 1e-15);
  EXPECT_NEAR(mean_over_depth([](double t) { return std::max(t - 0.3, 0.0); }, 1e-6), 0.02, 1e-6);
  EXPECT_TRUE(std::isnan(mean_over_depth([](double) { return std::nan(""); }, 1e-6)));
}

// Rounding to 1/65536 leaves at most 1/131072 a voxel, of which some hundred are cut.
TEST(Levels, SumUpToTheBodysVolume) {
  constexpr double kVoxel = 0.75 * 1.25 * 0.5, kBound = 1e-3;
  const struct_layer before = body(HOMOG, 1, 0);  // slices 0 and 1
  const auto volume = [&](const struct_layer& l, int first, int end) {
    const Painted painted(24, 24, 24, {before, l});
    return painted.share({0, 24, first, end}) * kVoxel;
  };
  struct_layer guide = body(WGUIDE, 5, kMany);
  guide.r = 4.1, guide.x = 0.37, guide.y = -0.61;
  EXPECT_NEAR(volume(guide, 2, 12), M_PI * 4.1 * 4.1 * 5, kBound);
  guide.tiltx = 20, guide.tilty = -10;  // an ellipse in each slice
  const double cosine = 1 / std::hypot(1, std::tan(M_PI / 9), std::tan(M_PI / 18));
  EXPECT_NEAR(volume(guide, 2, 12), M_PI * 4.1 * 4.1 * 5 / cosine, kBound);

  // Cones between half a slice before the first and half a slice before the end.
  struct_layer taper = body(TAPER, 5, kMany);
  taper.rin = 2, taper.rout = 5;
  const auto cone = [](double a, double b) { return M_PI / 3 * (a * a + a * b + b * b) * 5; };
  EXPECT_NEAR(volume(taper, 2, 12), cone(1.85, 4.85), kBound);
  taper.t = SPLITTER, taper.wx = 0.9, taper.wy = -1;  // twice the area, wherever it goes
  EXPECT_NEAR(volume(taper, 2, 12), 2 * cone(1.85, 4.85), kBound);

  // A ball in the middle of its slices, and a lens: half a slice more than its thickness from the
  // vertex, which lies on its last slice.
  struct_layer lens = body(LENS, 10, kMany);
  lens.r = -3.7, lens.dz = 1.3;
  EXPECT_NEAR(volume(lens, 2, 22), 4 * M_PI / 3 * std::pow(3.7, 3), kBound);
  lens.z = 3, lens.r = 6, lens.dz = 0, lens.offsetx = 0.4;
  const double cap = 2.5 + 0.25;
  EXPECT_NEAR(volume(lens, 2, 8), M_PI * cap * cap * (6 - cap / 3), kBound);
}

// The mean of the samples that a grid of 15^3 as many takes in place of one: within half a step,
// and what those samples miss themselves, at most one layer of them in some 15.
TEST(Levels, AreTheMeanOfAFinerGrid) {
  constexpr int kFiner = 15, kSide = 10, kSlices = 8, kLevels = 8;
  struct_layer guide = body(WGUIDE, 4, 0), taper = body(TAPER, 4, 0), arm = body(SPLITTER, 4, 0),
               lens = body(LENS, 4, 0);
  guide.r = 2.3, guide.tiltx = 15, guide.tilty = -25;
  taper.rin = 1.2, taper.rout = 3.9, taper.offsetx = 0.3;
  arm.rin = 1.5, arm.rout = 0.6, arm.wx = 1.7, arm.wy = -0.9, arm.x = -0.8;
  lens.r = -4.4, lens.offsety = 0.55, lens.tiltx = 12;
  for (struct_layer l : {guide, taper, arm, lens}) {
    Painted fine(kSide * kFiner, kSide * kFiner, kSlices * kFiner, {l});
    for (double* d : {&fine.so.dx, &fine.so.dy, &fine.so.dz}) *d /= kFiner;
    fine.build();
    const std::vector<cpx> samples = fine.paint(fine.stack->whole());
    l.levels = kLevels;
    const Painted coarse(kSide, kSide, kSlices, {l});
    int cut = 0;
    for (int k = 1; k < kSlices - 1; ++k) {
      const std::vector<cpx> slice = coarse.slice(k);
      for (int j = 1; j < kSide - 1; ++j)
        for (int i = 1; i < kSide - 1; ++i) {
          cpx mean = 0.0;
          const auto from = [](int c) { return c * kFiner - kFiner / 2; };
          for (int z = from(k); z < from(k + 1); ++z)
            for (int y = from(j); y < from(j + 1); ++y)
              for (int x = from(i); x < from(i + 1); ++x)
                mean += samples[std::size_t((z * kSide * kFiner + y) * kSide * kFiner + x)];
          mean /= std::pow(kFiner, 3);
          const cpx n = slice[std::size_t(j * kSide + i)];
          EXPECT_NEAR(n.real(), mean.real(), 0.5 / kLevels + 0.5 / kFiner) << l.t << ' ' << k;
          EXPECT_NEAR(n.imag(), 0.01 * n.real(), 1e-15);  // extinction is mixed alike
          const double steps = (n.real() - 1) * kLevels;
          EXPECT_NEAR(steps, std::round(steps), 1e-12);
          cut += steps > 0.5 && steps < kLevels - 0.5 ? 1 : 0;
        }
    }
    EXPECT_GT(cut, 50) << l.t;
  }
}

// One level is none, to the bit; nor do two materials that are one mix into a third.
TEST(Levels, OfOneAreWholeVoxels) {
  for (const component t : {WGUIDE, TAPER, SPLITTER, LENS}) {
    struct_layer l = body(t, 6, 0);
    l.r = 3.3, l.rin = 1.1, l.rout = 4, l.wx = 1;
    const Painted none(12, 12, 12, {l});
    l.levels = 1;
    const Painted one(12, 12, 12, {l});
    EXPECT_EQ(none.paint(none.stack->whole()), one.paint(one.stack->whole()));
    l.levels = 9;
    l.n = l.ne = 1.7, l.k = l.ke = 0.3;
    for (const cpx& n : Painted(12, 12, 12, {l}).paint({0, 12, 0, 12})) EXPECT_EQ(n, cpx(1.7, 0.3));
  }
}

// Not only the samples of a slice count now, so slices of a lens differ even where no sample does.
TEST(Levels, StretchesAreStillEqualSlices) {
  struct_layer guide = body(WGUIDE, 2, 8), lens = body(LENS, 6, 8);
  guide.r = 2.3, lens.r = -1.1;
  const Painted all(12, 12, 16, {guide, lens});
  for (int k = 1; k < 16; ++k)
    if (all.stack->stretch(k) == all.stack->stretch(k - 1)) {
      EXPECT_EQ(all.slice(k), all.slice(k - 1)) << k;
    }
  EXPECT_EQ(all.stack->stretch(0), all.stack->stretch(3));
  EXPECT_NE(all.stack->stretch(6), all.stack->stretch(7));
  EXPECT_EQ(all.stack->stretch(10), all.stack->stretch(15));  // behind the ball
}

}  // namespace
