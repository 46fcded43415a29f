#include <gtest/gtest.h>

#include "wpm/fresnel.h"
#include "wpm/wpm.h"

namespace {

// 0.3 / 0.0001 and 0.7 / 0.0001 are just under a whole number in double precision; 0.1, 0.2 and 0.5
// are not.
TEST(Trim, RoundsBothPartsDownOnAGridOfOneTenThousandth) {
  struct Case {
    double value;
    double steps;  // of 0.0001
  };
  for (const Case& c :
       {Case{1.0, 10000}, Case{0.99996, 9999}, Case{-0.00001, -1}, Case{0.3, 2999}, Case{0.7, 6999},
        Case{0.1, 1000}, Case{0.2, 2000}, Case{0.5, 5000}, Case{0.0, 0}}) {
    cpx value(c.value, -c.value);
    trim(value);
    EXPECT_EQ(value.real(), c.steps * 0.0001) << c.value;
    EXPECT_LE(value.imag(), -c.value + 1e-16) << c.value;
  }
}

TEST(Fresnel, TakesTheTextbookValues) {
  EXPECT_EQ(fresnelTTE(3.0, 3.0), cpx(1.0));
  EXPECT_EQ(fresnelTTE(1.0, 3.0), cpx(0.5));
  // An evanescent wave after the step: 2/(1 + i) = 1 - i.
  EXPECT_EQ(fresnelTTE(1.0, cpx(0.0, 1.0)), cpx(1.0, -1.0));
  // At normal incidence both polarizations have 2n/(n + n'), here 2/2.5 = 0.8. This is exactly on
  // the grid: the last bit of the quotient decides.
  EXPECT_EQ(fresnelTTE(1.0, 1.5), cpx(0.8));
  EXPECT_NEAR(fresnelTTM(1.0, 1.5, 1.0, 1.5).real(), 0.8, 1e-4 + 1e-15);
  // Brewster's angle, tan = 1.5: TM has no reflection, so t = n/n' = 2/3, rounded down.
  const double cos_i = 1.0 / std::sqrt(3.25);
  const double cos_t = 1.5 / std::sqrt(3.25);
  EXPECT_NEAR(fresnelTTM(1.0, 1.5, cos_i, 1.5 * cos_t).real(), 0.6666, 1e-12);
}

// Energy: (1 - r^2) kz_i = t^2 kz_t with r = t - 1 for TE. trim takes less than 0.0001.
TEST(Fresnel, ConservesEnergyBeforeItIsTrimmed) {
  for (const auto& [kz_i, kz_t] :
       {std::pair(1.0, 1.5), std::pair(1.37, 0.2), std::pair(0.9, 0.9)}) {
    const double t = wpm::transmission_TE(kz_i, kz_t).real();
    EXPECT_NEAR((1 - (t - 1) * (t - 1)) * kz_i, t * t * kz_t, 1e-15);
    EXPECT_NEAR(fresnelTTE(kz_i, kz_t).real(), t, 1e-4);
    EXPECT_LE(fresnelTTE(kz_i, kz_t).real(), t);
    // At equal indices TM equals TE.
    EXPECT_NEAR(wpm::transmission_TM(1.3, 1.3, kz_i, kz_t).real(), t, 1e-15);
  }
}

TEST(Fresnel, PassesAWaveWithoutDenominator) {
  EXPECT_EQ(fresnelTTE(cpx(0.0, 2.0), cpx(0.0, -2.0)), cpx(1.0));
  EXPECT_EQ(fresnelTTM(1.0, 1.0, cpx(0.0, 2.0), cpx(0.0, -2.0)), cpx(1.0));
  EXPECT_EQ(fresnelTTE(0.0, 0.0), cpx(1.0));
}

}  // namespace
