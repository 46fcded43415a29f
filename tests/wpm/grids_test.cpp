#include <gtest/gtest.h>

#include "wpm/wpm.h"

namespace {

TEST(Grids, PositionsAreCentred) {
  struct Case {
    std::vector<double> positions;
    double spacing;
  };
  for (const Case& c :
       {Case{{}, 1}, Case{{0}, 1}, Case{{-2, -1, 0, 1}, 1}, Case{{-1, -0.5, 0, 0.5, 1}, 0.5}}) {
    std::vector<double> X(c.positions.size());
    init_X(X.data(), static_cast<int>(X.size()), c.spacing);
    EXPECT_EQ(X, c.positions);
  }
}

// On odd sizes the last element is not written.
TEST(Grids, FrequenciesStandInTransformOrder) {
  constexpr double kLeft = 77;
  for (const std::vector<double>& expected : {std::vector<double>{kLeft},
                                              {0, -1},
                                              {0, -1, kLeft},
                                              {0, 1, -2, -1},
                                              {0, 1, -2, -1, kLeft}}) {
    std::vector<cpx> F(expected.size(), kLeft);
    init_F(F.data(), static_cast<int>(F.size()), 1.0);
    EXPECT_EQ(F, std::vector<cpx>(expected.begin(), expected.end()));
  }
}

TEST(Grids, FluxStartsAtZeroAndUnitsHaveAMeasure) {
  struct_sysOptions so;
  so.nx = 2, so.ny = 3, so.nz = 2;
  std::vector<double> F(13, 5.0);
  testing::internal::CaptureStdout();
  init_0(F.data(), &so, false);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "memory initialized zero\n");
  EXPECT_EQ(F[11], 0.0);
  EXPECT_EQ(F[12], 5.0);

  so.nz = -2;
  init_0(F.data(), &so, true);
  EXPECT_EQ(F[12], 5.0);

  const double metres[] = {1.0, 0.1, 0.01, 0.001, 1e-06, 1e-09, 1e-12, 1e-09};
  for (int unit = 0; unit < 8; ++unit) {
    so.scl = static_cast<scale>(unit);
    init(&so);
    EXPECT_EQ(so.f, metres[unit]);
  }
}

}  // namespace
