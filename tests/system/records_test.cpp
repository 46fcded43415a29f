#include <gtest/gtest.h>

#include "system/system.h"

namespace {

TEST(Records, ResetGivesTheDefaults) {
  struct_sysOptions so;
  so.sysname = "a", so.p = TM, so.evanescent = false, so.nx = so.izlast = 7, so.f = 7;
  so.reset();
  EXPECT_EQ(std::tuple(so.sysname, so.scl, so.mth, so.p, so.evanescent, so.efield, so.hfield),
            std::tuple("", M, WPM, NA, true, true, false));
  EXPECT_EQ(std::tuple(so.izlast, so.nx, so.ny, so.nz, so.dx, so.f), std::tuple(0, 1, 1, 0, 1, 1));
}

TEST(Records, CopyLeavesOutWhatBelongsToTheTarget) {
  struct_layer from, to;
  from.t = TAPER, from.sm = from.rout = from.wx = from.wy = from.dx = from.dy = from.dz = 3;
  to.wx = to.wy = to.dx = to.dy = to.dz = 5;
  to.copy(from);
  EXPECT_EQ(std::tuple(to.t, to.sm, to.rout), std::tuple(TAPER, 3, 3));
  EXPECT_EQ(std::tuple(to.wx, to.wy, to.dx, to.dy, to.dz), std::tuple(5, 5, 5, 5, 5));

  struct_sysOptions so, other;
  so.sysname = "own", other.sysname = "other";
  other.p = TE, other.izlast = 9;
  so.copy(other);
  EXPECT_EQ(std::tuple(so.sysname, so.p, so.izlast), std::tuple("own", TE, 9));
}

// (n + ik)^2 = eps, by hand; of the two roots the one in the first quadrant, whatever the sign of
// the imaginary part. The bounds are a rounding or two.
TEST(Materials, IndexIsTheRootOfThePermittivity) {
  const std::pair<cpx, cpx> kRoots[] = {{2.25, 1.5},        {-1.0, {0, 1}}, {{-3, 4}, {1, 2}},
                                        {{-3, -4}, {1, 2}}, {0.0, 0.0},     {{0, 2}, {1, 1}}};
  for (const auto& [eps, n] : kRoots) EXPECT_LE(std::abs(epsToN(eps) - n), 1e-15) << eps;
  EXPECT_LE(std::abs(nToEps({1.5, 0.1}) - cpx(2.24, 0.3)), 1e-15);
}

}  // namespace
