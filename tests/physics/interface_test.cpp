// Laws of refraction and reflection at a flat interface.
#include <gtest/gtest.h>

#include <cmath>

#include "support/scene.h"

namespace {

constexpr double kLambda = 1e-6;
constexpr double kTrim = 1e-4;  // coefficients are rounded down to this grid

// A plane wave at this angle, on the grid's frequency 1 in x, from n_i through slice 1 into n_t.
Scene tilted_at_interface(double degrees, double n_i, double n_t, polarization pol) {
  const double sine = n_i * std::sin(degrees * M_PI / 180);
  const double dx = sine == 0.0 ? 0.25e-6 : kLambda / (8 * sine);
  Scene scene(8, 8, 4, dx, dx, 0.1e-6, kLambda);
  scene.pol = pol;
  scene.fill(0, 2, n_i);
  scene.fill(2, 4, n_t);
  if (sine != 0.0) {
    const double kx = scene.frequency(1);
    scene.illuminate([=](double x, double) { return std::exp(cpx(0.0, kx * x)); });
  }
  scene.propagate();
  return scene;
}

// Normal incidence from 1 to 1.5: t = 2/(1 + 1.5) = 0.8 exactly, flux 0.8^2 * 1.5 = 0.96.
TEST(Interface, NormalIncidencePassesAmplitude08AndFlux096) {
  for (const polarization pol : {TE, TM}) {
    const Scene scene = tilted_at_interface(0, 1.0, 1.5, pol);
    EXPECT_NEAR(std::abs(scene.at(2, 4, 4)), 0.8, pol == TE ? 1e-15 : kTrim);
    EXPECT_NEAR(scene.flux(2) / scene.flux(1), 0.96, pol == TE ? 1e-14 : 2 * kTrim);
  }
  // Without a polarization the step does not change the amplitude.
  EXPECT_NEAR(std::abs(tilted_at_interface(0, 1.0, 1.5, NA).at(2, 4, 4)), 1.0, 1e-15);
}

// Fresnel's power transmission, T = t^2 * kz_t/kz_i, from 1 to 1.5 (Born & Wolf 1.5.3). TE has the
// textbook's figures. TM passes all power at Brewster's angle atan(1.5). Rounding both parts of t
// down by up to 1e-4 takes up to 2 * 1e-4 * T/t from T.
TEST(Interface, TiltedWavesPassFresnelsPower) {
  struct Case {
    double degrees;
    polarization pol;
    double power;
  };
  for (const Case& c : {Case{30, TE, 0.94220}, Case{45, TE, 0.90799}, Case{60, TE, 0.82343},
                        Case{std::atan(1.5) * 180 / M_PI, TM, 1.0}}) {
    const Scene scene = tilted_at_interface(c.degrees, 1.0, 1.5, c.pol);
    const double t = std::abs(scene.at(2, 4, 4) / scene.at(1, 4, 4));
    const double power = scene.flux(2) / scene.flux(1);
    EXPECT_LE(power, c.power + 1e-5) << c.degrees;
    EXPECT_GE(power, c.power - 2 * kTrim * c.power / t - 1e-5) << c.degrees;
  }
}

// Beyond the critical angle, asin(1/1.5) = 41.8 degrees, the field decays by k0 sqrt(1.5^2 sin^2 -
// 1) without flux.
TEST(Interface, TotalReflectionLeavesADecayingFieldWithoutFlux) {
  const Scene scene = tilted_at_interface(60, 1.5, 1.0, TE);
  const double rate = scene.k0 * std::sqrt(1.5 * 1.5 * 0.75 - 1.0);
  EXPECT_GT(std::abs(scene.at(2, 4, 4)), 0.1);
  EXPECT_NEAR(std::abs(scene.at(3, 4, 4) / scene.at(2, 4, 4)), std::exp(-rate * scene.dz), 1e-7);
  EXPECT_EQ(scene.flux(2), 0.0);
}

// An evanescent wave propagates in a denser medium: 1.2 k0 in an index of 1.5.
TEST(Interface, EvanescentWaveIsCoupledIntoADenserMedium) {
  const double dx = kLambda / (8 * 1.2);
  Scene scene(8, 8, 2, dx, dx, 0.1e-6, kLambda);
  scene.fill(1, 2, 1.5);
  const double kx = scene.frequency(1);
  scene.illuminate([=](double x, double) { return std::exp(cpx(0.0, kx * x)); });
  scene.propagate();
  const cpx kz_i(0.0, std::sqrt(0.44));
  const double kz_t = std::sqrt(2.25 - 1.44);
  const double t = std::abs(2.0 * kz_i / (kz_i + kz_t));
  EXPECT_NEAR(std::abs(scene.at(1, 4, 4)), t, 2 * kTrim);
  EXPECT_NEAR(scene.flux(1) / (64 * scene.k0 * kz_t), t * t, 4 * kTrim * t);
}

// A change of the extinction alone is no interface.
TEST(Interface, StepInAbsorptionAloneReflectsNothing) {
  Scene scene(8, 8, 2, 0.25e-6, 0.25e-6, 0.1e-6, kLambda);
  scene.fill(1, 2, {1.0, 0.5});
  scene.propagate();
  EXPECT_NEAR(std::abs(scene.at(1, 4, 4)), std::exp(-scene.k0 * 0.5 * scene.dz), 1e-15);
}

}  // namespace
