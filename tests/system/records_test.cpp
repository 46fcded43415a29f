#include <gtest/gtest.h>

#include "system/system.h"

namespace {

TEST(Records, ResetGivesTheDefaults) {
  struct_sysOptions so;
  so.sysname = "a", so.p = TM, so.evanescent = false, so.nx = so.workers = so.izlast = 7, so.f = 7;
  so.reset();
  EXPECT_EQ(std::tuple(so.sysname, so.scl, so.mth, so.p), std::tuple("", M, WPM, NA));
  EXPECT_TRUE(so.evanescent && so.efield);
  EXPECT_FALSE(so.updated || so.smooth || so.irradiance || so.energyflux || so.absorption ||
               so.bidirectional || so.multithreaded || so.distributed || so.hfield ||
               so.permittivity || so.permeability);
  EXPECT_EQ(std::tuple(so.iterations, so.threads, so.workers, so.workersDone, so.nodes, so.iz),
            std::tuple(1, 1, 0, 1, 1, 0));
  EXPECT_EQ(std::tuple(so.izlast, so.nx, so.ny, so.nz), std::tuple(0, 1, 1, 0));
  EXPECT_EQ(std::tuple(so.x, so.y, so.z, so.t, so.dx, so.dy, so.dz, so.f),
            std::tuple(0, 0, 0, 0, 1, 1, 1, 1));
}

TEST(Records, CopyLeavesOutWhatBelongsToTheTarget) {
  struct_layer from, to;
  from.t = TAPER, from.sm = from.rout = from.wx = from.wy = from.dx = from.dy = from.dz = 3;
  to.wx = to.wy = to.dx = to.dy = to.dz = 5;
  to.copy(from);
  EXPECT_EQ(std::tuple(to.t, to.sm, to.rout), std::tuple(TAPER, 3, 3));
  EXPECT_EQ(std::tuple(to.wx, to.wy, to.dx, to.dy, to.dz), std::tuple(5, 5, 5, 5, 5));
  to.reset();
  EXPECT_EQ(std::tuple(to.t, to.sm, to.wx, to.dz), std::tuple(HOMOG, 0, 0, 0));

  struct_sysOptions so, other;
  so.sysname = "own", other.sysname = "other";
  other.updated = true, other.p = TE, other.izlast = 9, other.f = 0.5;
  so.copy(other);
  EXPECT_EQ(std::tuple(so.sysname, so.updated, so.p, so.izlast, so.f),
            std::tuple("own", true, TE, 9, 0.5));

  struct_emfield wave, source;
  source.s = GAUSSIAN, source.sigmay = 2;
  wave.copy(source);
  EXPECT_EQ(std::tuple(wave.s, wave.sigmay), std::tuple(GAUSSIAN, 2));
  wave.reset();
  EXPECT_EQ(std::tuple(wave.s, wave.sigmay), std::tuple(RANDOM, 0));
}

// (n + ik)^2 = eps, by hand; of the two roots the one in the first quadrant, whatever the sign of
// the imaginary part. The bounds are a rounding or two.
TEST(Materials, IndexIsTheRootOfThePermittivity) {
  for (const auto& [eps, n] : {std::pair<cpx, cpx>(2.25, 1.5),
                               {-1.0, {0, 1}},
                               {{-3, 4}, {1, 2}},
                               {{-3, -4}, {1, 2}},
                               {0.0, 0.0},
                               {{0, 2}, {1, 1}}})
    EXPECT_LE(std::abs(epsToN(eps) - n), 1e-15) << eps;
  EXPECT_LE(std::abs(nToEps({1.5, 0.1}) - cpx(2.24, 0.3)), 1e-15);
  EXPECT_LE(std::abs(epsToN(nToEps({0.2, -3.4})) - cpx(0.2, 3.4)), 1e-14);
}

TEST(Records, BlanksAreRemovedAndTabsStay) {
  char text[] = " a \t b  ";
  EXPECT_TRUE(removeBlanks(text));
  EXPECT_STREQ(text, "a\tb");
}

}  // namespace
