// Components that are moved, turned and painted over others, and those of our own.
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "painted.h"
#include "support/errors.h"

namespace {

const cpx kFirst(2, 0.02), kSecond(1, 0.01);

struct_layer body(component t, double z) {
  return {.t = t,
          .z = z,
          .r = 2.4,
          .px = 6,
          .wx = 1.5,
          .py = 10,
          .wy = 2.5,
          .rin = 1.3,
          .rout = 2.9,
          .n = 2,
          .k = 0.02,
          .ne = 1,
          .ke = 0.01,
          .g = 0.2};
}

// By two columns to the right and one row down, whole voxels or shares.
TEST(Offset, MovesEveryComponent) {
  for (const component t : {HOMOG, GRATING, WGUIDE, TAPER, SPLITTER, LENS, GRIN})
    for (const int levels : {1, 8}) {
      struct_layer l = body(t, 3);
      l.levels = levels;
      if (t == GRATING && levels > 1) l.duty = 0.4;
      const Painted there(16, 16, 6, {l});
      l.offsetx = 2 * 0.75, l.offsety = 1.25;
      const Painted moved(16, 16, 6, {l});
      int firsts = 0;
      for (int k = 0; k < 6; ++k) {
        const std::vector<cpx> a = there.slice(k), b = moved.slice(k);
        for (std::size_t j = 0; j < 15; ++j)
          for (std::size_t i = 0; i < 14; ++i) {
            EXPECT_NEAR(std::abs(a[j * 16 + i] - b[(j + 1) * 16 + i + 2]), 0, 1e-12) << t << k;
            firsts += a[j * 16 + i].real() > 1.5 ? 1 : 0;
          }
      }
      EXPECT_GT(firsts, 6) << t;
    }
}

// The axis leaves the first slice at the middle and goes sideways by the tangent; a lens turned
// about its vertex keeps it there and its axis stands on the tilted line.
TEST(Tilt, TurnsGuidesAboutTheirEntryAndLensesAboutTheirVertex) {
  const auto centre = [](const Painted& painted, int k) {
    const std::vector<cpx> slice = painted.slice(k);
    double x = 0, y = 0, sum = 0;
    for (std::size_t i = 0; i < slice.size(); ++i) {
      const double weight = slice[i].real() - 1;
      x += weight * (static_cast<double>(i % 40) - 20) * 0.75;
      y += weight * (static_cast<double>(i / 40) - 20) * 1.25;
      sum += weight;
    }
    return std::pair(x / sum, y / sum);
  };
  for (const int levels : {1, 4096}) {
    struct_layer guide = body(WGUIDE, 5), lens = body(LENS, 5);
    guide.levels = lens.levels = levels;
    guide.tiltx = 30, guide.tilty = -20, guide.r = 4;
    const double bound = levels == 1 ? 0.25 : 0.01;  // cells count as if at their middles
    const Painted leaning(40, 40, 12, {body(HOMOG, 1), guide});
    for (int k = 2; k < 12; ++k) {
      const auto [x, y] = centre(leaning, k);
      EXPECT_NEAR(x, std::tan(M_PI / 6) * (k - 2) * 0.5, bound) << k;
      EXPECT_NEAR(y, -std::tan(M_PI / 9) * (k - 2) * 0.5, bound) << k;
    }
    for (const double r : {9.0, -9.0}) {
      lens.r = r, lens.tiltx = 10, lens.tilty = 25;
      const Painted turned(40, 40, 12, {body(HOMOG, 1), lens});
      const double tx = std::tan(M_PI / 18), ty = std::tan(M_PI * 25 / 180);
      const double length = std::sqrt(1 + tx * tx + ty * ty);
      const auto [x, y] = centre(turned, 6);
      EXPECT_NEAR(x, -r * tx / length, bound);
      EXPECT_NEAR(y, -r * ty / length, bound);
    }
  }
}

TEST(Over, PaintsItsShapeOnTheSlicesOfTheLayerBefore) {
  struct_layer left = body(WGUIDE, 0), right = body(WGUIDE, 1);
  left.offsetx = -3, right.offsetx = 3, right.n = 3;
  left.over = right.over = true;
  const Painted pair(16, 16, 6, {body(HOMOG, 1), body(GRIN, 2), left, right});
  EXPECT_EQ(pair.so.izlast, 6);
  const std::vector<cpx> rod = Painted(16, 16, 6, {body(GRIN, 3)}).slice(0);
  const std::vector<cpx> core = Painted(16, 16, 6, {body(WGUIDE, 3)}).slice(0);
  for (int k = 0; k < 6; ++k) {
    const std::vector<cpx> slice = pair.slice(k);
    for (std::size_t i = 4; i < 256 - 4; ++i) {
      const bool is_left = k >= 2 && core[i + 4] == kFirst;
      const bool is_right = k >= 2 && k < 4 && core[i - 4] == kFirst;
      const cpx below = k < 2 ? kFirst : rod[i];
      EXPECT_EQ(slice[i], is_right ? cpx(3, 0.02) : is_left ? kFirst : below) << k << ' ' << i;
    }
  }
  EXPECT_EQ(pair.stack->stretch(2), pair.stack->stretch(3));
  EXPECT_NE(pair.stack->stretch(3), pair.stack->stretch(4));

  // What a face cuts mixes with what lies there; a body that fills the base's last slices only
  // through its own shape leaves them be.
  struct_layer ball = body(LENS, 0);
  ball.over = true, ball.levels = 4;
  const Painted mixed(16, 16, 6, {{.z = 3, .n = 1.2}, ball});
  for (const cpx& n : mixed.paint({0, 16, 0, 6})) {
    const double step = (n.real() - 1.2) / 0.8 * 4;
    EXPECT_NEAR(step, std::round(step), 1e-12);
    EXPECT_NEAR(n.imag(), 0.02 * step / 4, 1e-15);
  }
  EXPECT_ERROR(Painted(4, 4, 4, {left}), "over = 1.*there is none");
}

// Every step between axis and rim, each within half a step of the law.
TEST(Grin, FollowsTheRootInEqualSteps) {
  for (const int levels : {0, 1, 7}) {
    struct_layer rod = body(GRIN, 1);
    rod.levels = levels, rod.r = 4.2, rod.n = 1.6, rod.g = 0.15;
    const Painted painted(24, 24, 4, {body(HOMOG, 1), rod});
    const std::vector<cpx> slice = painted.slice(2);
    const double steps = levels == 0 ? 64 : levels;
    const double height = 1.6 * (1 - std::sqrt(1 - std::pow(0.15 * 4.2, 2)));
    std::set<double> values;
    for (std::size_t i = 0; i < slice.size(); ++i) {
      const double x = (static_cast<double>(i % 24) - 12) * 0.75;
      const double y = (static_cast<double>(i / 24) - 12) * 1.25;
      if (std::hypot(x, y) > 4.2) {
        EXPECT_EQ(slice[i], kSecond);
        continue;
      }
      const double n = 1.6 * std::sqrt(1 - std::pow(0.15 * std::hypot(x, y), 2));
      EXPECT_NEAR(slice[i].real(), n, 0.5001 * height / steps);
      EXPECT_EQ(slice[i].imag(), 0.02);
      values.insert(slice[i].real());
    }
    EXPECT_LE(values.size(), steps);
    EXPECT_GE(values.size(), std::min(steps, 12.0));
    EXPECT_EQ(painted.stack->stretch(2), painted.stack->stretch(3));
  }
}

// Two periods of 9 on 24 columns of 0.75: the shares add up to the duty, and the bars stand about
// the middle of all cells.
TEST(EqualBars, TakeExactlyTheirShare) {
  for (const double duty : {0.5, 0.31, 0.9}) {
    struct_layer l = body(GRATING, 2);
    l.px = 9, l.py = 0, l.duty = duty, l.levels = 4096;
    const Painted bars(24, 24, 4, {l});
    EXPECT_NEAR(bars.share({0, 24, 1, 2}) / 576, duty, 1e-4);
    const std::vector<cpx> slice = bars.slice(1);
    for (std::size_t i = 0; i < 24; ++i) EXPECT_EQ(slice[i], slice[23 - i]);
    EXPECT_EQ(slice[12], kFirst);
    l.py = 10;  // crossed: gaps only where both leave one; bars in y as seen by samples
    const double gaps = 1 - Painted(24, 24, 4, {l}).share({0, 24, 1, 2}) / 576;
    EXPECT_NEAR(gaps, (1 - duty) * (1 - duty), 1e-4);
    l.levels = 1, l.py = 0;
    std::set<double> materials;
    for (const cpx& n : Painted(24, 24, 4, {l}).slice(0)) materials.insert(n.real());
    EXPECT_EQ(materials, (std::set<double>{1, 2}));
  }
}

TEST(Screens, StandBetweenLayersAndTakeNoSlices) {
  struct_layer hole = body(SCREEN, 5);
  hole.line = 17;
  const Painted painted(4, 4, 6, {hole, body(HOMOG, 1), hole, body(HOMOG, 2)});
  ASSERT_EQ(painted.stack->screens().size(), 2U);
  EXPECT_EQ(painted.stack->screens()[0].slice, 0);
  EXPECT_EQ(painted.stack->screens()[1].slice, 2);
  EXPECT_EQ(painted.stack->screens()[1].layer.r, 2.4);
  EXPECT_EQ(painted.so.izlast, 6);
  EXPECT_EQ(painted.paint({0, 4, 0, 6}), std::vector<cpx>(96, kFirst));
  EXPECT_ERROR(Painted(4, 4, 6, {body(HOMOG, 3), hole}),
               "line 17: .*screen would stand at slice 6");
}

}  // namespace
