// Laws of propagation in a uniform medium: the method is the exact angular spectrum.
#include <gtest/gtest.h>

#include <cmath>

#include "support/scene.h"

namespace {

constexpr double kLambda = 1e-6;

// Two pi is cut at 6.2831853, 1.1e-9 short, in k0 and in the axes.
constexpr double kTwoPiCut = 1.2e-9;

// On-axis intensity of a Gaussian beam one Rayleigh length from its waist w0: paraxially 1/2. The
// figures are those of the angular spectrum integral, which the test also evaluates:
//   E(z) = w0^2/2 * Integral_0^k0 exp(-k^2 w0^2/4 + i z sqrt(k0^2 - k^2)) k dk
TEST(FreeSpace, GaussianBeamFadesAsItsAngularSpectrumSays) {
  struct Case {
    double waist;  // in wavelengths
    double intensity;
  };
  for (const Case& c : {Case{2, 0.493691}, Case{5, 0.498987}, Case{10, 0.499747}}) {
    const double w0 = c.waist * kLambda;
    const double rayleigh = M_PI * w0 * w0 / kLambda;
    cpx integral = 0.0;
    constexpr int kPoints = 200000;  // midpoint rule: 1e-9 at this number
    for (int m = 0; m < kPoints; ++m) {
      const double u = (m + 0.5) / kPoints;  // k / k0
      const double k0w0 = 2 * M_PI * c.waist;
      integral += std::exp(cpx(-u * u * k0w0 * k0w0 / 4,
                               2 * M_PI * rayleigh / kLambda * std::sqrt(1 - u * u))) *
                  u * (k0w0 * k0w0 / 2 / kPoints);
    }
    EXPECT_NEAR(std::norm(integral), c.intensity, 6e-7);

    // 12 waists wide: the field at the border is exp(-18) of the peak after one Rayleigh length. At
    // w0/4 the spectrum ends at exp(-39). A large amplitude keeps weak plane waves above the cut.
    Scene scene(48, 48, 2, w0 / 4, w0 / 4, rayleigh, kLambda);
    constexpr double kAmplitude = 1e6;
    scene.illuminate(
        [w0](double x, double y) { return kAmplitude * std::exp(-(x * x + y * y) / (w0 * w0)); });
    scene.propagate();
    EXPECT_NEAR(std::norm(scene.at(1, 24, 24)) / (kAmplitude * kAmplitude), c.intensity, 2e-6);
  }
}

// On the grid's frequencies a tilted plane wave only turns its phase, by kz dz, and keeps its flux.
// The cut of two pi leaks a little into neighbouring frequencies at each step.
TEST(FreeSpace, TiltedPlaneWaveTurnsItsPhaseAndKeepsItsFlux) {
  for (const double n : {1.0, 1.5, 3.2}) {
    Scene scene(16, 16, 9, 0.4e-6, 0.4e-6, 0.25e-6, kLambda);
    scene.fill(0, scene.nz, n);
    const double kx = scene.frequency(3);
    const double ky = scene.frequency(-2);
    scene.illuminate([=](double x, double y) { return std::exp(cpx(0.0, kx * x + ky * y)); });
    scene.propagate();
    const double kz = std::sqrt(n * n * scene.k0 * scene.k0 - kx * kx - ky * ky);
    for (int k = 1; k < scene.nz; ++k) {
      const cpx expected = scene.at(0, 5, 11) * std::exp(cpx(0.0, kz * k * scene.dz));
      EXPECT_LE(std::abs(scene.at(k, 5, 11) - expected), 16 * M_PI * kTwoPiCut * k) << n;
      EXPECT_NEAR(scene.flux(k) / (256 * kz), 1.0, 1e-7);
    }
  }
}

// Beer-Lambert: a unit wave at normal incidence in n + i*kappa decays by exp(-k0*kappa*dz) a slice.
TEST(FreeSpace, AbsorptionFollowsBeerLambert) {
  Scene scene(16, 16, 9, 0.4e-6, 0.4e-6, 0.25e-6, kLambda);
  scene.fill(0, scene.nz, {1.5, 0.01});
  scene.propagate();
  for (int k = 1; k < scene.nz; ++k)
    EXPECT_NEAR(std::abs(scene.at(k, 8, 8)), std::exp(-scene.k0 * 0.01 * k * scene.dz),
                k * 4e-16);  // exponential, product and transform per slice, about an ulp each
}

// Absorption follows the vertical path: a tilted wave loses no more than a normal one.
TEST(FreeSpace, AbsorptionOfATiltedWaveIsThatOfTheVerticalPath) {
  Scene scene(16, 16, 2, 0.4e-6, 0.4e-6, 0.5e-6, kLambda);
  scene.fill(0, scene.nz, {1.0, 0.03});
  const double kx = scene.frequency(5);
  scene.illuminate([=](double x, double) { return std::exp(cpx(0.0, kx * x)); });
  scene.propagate();
  EXPECT_NEAR(std::abs(scene.at(1, 8, 8)), std::exp(-scene.k0 * 0.03 * scene.dz), 1e-8);
}

// A wave of 1.2 k0 decays with sqrt(1.44 - 1) k0 = 0.66332 k0, without flux. A tenth of a
// wavelength leaves exp(-0.416780) = 0.659166. Without evanescent modes it is gone.
TEST(FreeSpace, EvanescentWaveDecaysWithoutFlux) {
  Scene scene(8, 8, 2, kLambda / (1.2 * 8), kLambda / (1.2 * 8), 0.1 * kLambda, kLambda);
  const double kx = scene.frequency(1);
  scene.illuminate([=](double x, double) { return std::exp(cpx(0.0, kx * x)); });
  scene.propagate();
  EXPECT_NEAR(std::abs(scene.at(1, 4, 4)), 0.659166, 5e-7);
  EXPECT_EQ(scene.flux(1), 0.0);
  scene.do_evanescent_modes = false;
  scene.propagate();
  EXPECT_EQ(scene.power(1), 0.0);
}

// Three orders of a period of 2 wavelengths are in phase again after the exact Talbot length,
// lambda / (1 - sqrt(1 - (lambda/period)^2)) = 7.4641 wavelengths.
TEST(FreeSpace, GratingOrdersImageThemselves) {
  const double talbot = 7.464101615 * kLambda;
  Scene scene(16, 16, 3, kLambda / 8, kLambda / 8, talbot / 2, kLambda);
  const double kx = scene.frequency(1);
  scene.illuminate([=](double x, double) { return 1.0 + std::cos(kx * x); });
  scene.propagate();
  for (int i = 0; i < 16; ++i) {
    EXPECT_NEAR(std::abs(scene.at(2, 3, i)), std::abs(scene.at(0, 3, i)), 1e-6) << i;
    // Half way the bright and dark fringes are exchanged.
    EXPECT_NEAR(std::abs(scene.at(1, 3, i)), std::abs(scene.at(0, 3, (i + 8) % 16)), 1e-6) << i;
  }
}

// The method is linear except for the cut of weak plane waves at an absolute 1e-4. At these
// amplitudes it drops less than 256 * 1e-4 / 256 per slice.
TEST(FreeSpace, FieldsSuperpose) {
  const auto a = [](double x, double y) {
    return 1e6 * std::exp(cpx(-(x * x + y * y) / 1e-12, 0.0));
  };
  const auto b = [](double x, double y) { return 1e6 * std::exp(cpx(-x * x / 2e-12, 3e6 * y)); };
  Scene scene(16, 16, 4, 0.4e-6, 0.4e-6, 0.25e-6, kLambda);
  scene.fill(2, 4, 1.5);
  std::vector<Scene> scenes(3, scene);
  scenes[0].illuminate(a);
  scenes[1].illuminate(b);
  scenes[2].illuminate([&](double x, double y) { return a(x, y) + b(x, y); });
  for (Scene& each : scenes) each.propagate();
  for (std::size_t s = 0; s < scenes[0].E.size(); ++s)
    EXPECT_LE(std::abs(scenes[0].E[s] + scenes[1].E[s] - scenes[2].E[s]), 3 * 3 * 1e-4);
}

// The magnetic field is the electric one times n / (k0 * 376.73...). The flux is the same.
TEST(FreeSpace, MagneticFieldIsScaledByTheAdmittance) {
  Scene electric(16, 16, 2, 0.4e-6, 0.4e-6, 0.25e-6, kLambda);
  electric.fill(1, 2, 1.7);
  Scene magnetic = electric;
  magnetic.is_magnetic_field = true;
  electric.propagate();
  magnetic.propagate();
  const double admittance = 1.7 / (electric.k0 * 376.73031346);
  EXPECT_NEAR(std::abs(magnetic.at(1, 2, 3) / electric.at(1, 2, 3)) / admittance, 1.0, 1e-14);
  EXPECT_EQ(magnetic.F, electric.F);
}

}  // namespace
