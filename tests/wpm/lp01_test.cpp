#include "wpm/lp01.h"
#include "support/errors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

struct Fibre {
  double radius, core, cladding, lambda;
};

// Weak, strong, thick and thin fibres; one hardly guides.
constexpr Fibre kFibres[] = {{5.0, 1.46, 1.45, 1.0},
                             {4.1, 1.4504, 1.4447, 1.55},
                             {0.4, 2.0, 1.0, 1.0},
                             {50.0, 1.48, 1.46, 0.85},
                             {1.5, 1.45, 1.4469, 1.55}};

TEST(Lp01, EffectiveIndexOfAThickCore) {
  EXPECT_NEAR(Lp01(5.0, 1.46, 1.45, 2 * M_PI).effective_index(), 1.458586, 1e-6);
}

// The mode solves the scalar wave equation f'' + f'/rho = (beta^2 - k0^2 n^2) f on both sides of
// the boundary, and is smooth across it.
TEST(Lp01, SolvesTheWaveEquation) {
  for (const auto& [radius, core, cladding, lambda] : kFibres) {
    SCOPED_TRACE(testing::Message() << "radius " << radius);
    const double k0 = 2 * M_PI / lambda;
    const Lp01 mode(radius, core, cladding, k0);
    const double neff = mode.effective_index();
    EXPECT_TRUE(neff > cladding && neff < core) << neff;
    EXPECT_EQ(mode(0.0), 1.0);
    const double scale = k0 * std::sqrt(core * core - cladding * cladding);  // V / radius
    const double h = 1e-3 / std::max(scale, 1 / radius);
    for (const double r : {0.2, 0.5, 0.9, 1.1, 1.5}) {
      const double rho = r * radius, f = mode(rho), after = mode(rho + h), before = mode(rho - h);
      const double n = r < 1 ? core : cladding;
      const double transverse = k0 * k0 * (neff * neff - n * n);
      // Central differences err by h^2/12 of the fourth derivative, at most scale^4.
      EXPECT_NEAR(((after - 2 * f + before) / h + (after - before) / (2 * rho)) / h, transverse * f,
                  1e-6 * scale * scale * std::fabs(f));
    }
    const double d = 1e-3 * h;
    EXPECT_NEAR(mode(radius + d), mode(radius - d), 1e-4 * mode(radius));
    const double inside = mode(radius) - mode(radius - d),
                 outside = mode(radius + d) - mode(radius);
    EXPECT_NEAR(inside, outside, 1e-4 * std::fabs(inside));
    EXPECT_EQ(mode(1e6 * radius), 0.0 * mode(radius));
  }
}

TEST(Lp01, NeedsACoreThatGuides) {
  EXPECT_ERROR(Lp01(5.0, 1.45, 1.45, 6.28), "guides no mode");
  EXPECT_FALSE(Lp01::exists(0.0, 1.46, 1.45, 6.28) || Lp01::exists(5.0, NAN, 1.45, 6.28) ||
               Lp01::exists(5.0, 1.46, NAN, 6.28) || Lp01::exists(5.0, 1.46, 1.45, 0.0));
}

}  // namespace
