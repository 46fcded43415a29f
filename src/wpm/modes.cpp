#include "wpm/modes.h"

#include <cmath>

#include "wpm/fresnel.h"

namespace {

constexpr double kVacuumImpedance = 376.73031346;  // ohm

// kz = n k0 sqrt(1 - (kx^2 + ky^2)/(n k0)^2). Only the real part of the index enters. The imaginary
// part of the root's argument is +0, so the root of an evanescent wave lies on the positive
// imaginary axis, its real part exactly 0, and the wave decays.
cpx longitudinal(double nk0, const PlaneWave& wave) {
  if (wave.is_vertical_incidence()) return {nk0, 0.0};
  const double r = wave.kxy_sq / (nk0 * nk0);
  const cpx root = std::sqrt(cpx(1.0 - r, 0.0 - 0.0 * r));
  return {nk0 * root.real(), nk0 * root.imag()};
}

cpx transmission(const IndexPair& pair, const cpx& kz_i, const cpx& kz_t, const StepOptions& step) {
  if (step.pol == TE)
    return step.is_trimmed ? fresnelTTE(kz_i, kz_t) : wpm::transmission_TE(kz_i, kz_t);
  if (step.pol == TM)
    return step.is_trimmed ? fresnelTTM(pair.n_i, pair.n_t, kz_i, kz_t)
                           : wpm::transmission_TM(pair.n_i, pair.n_t, kz_i, kz_t);
  return {1.0, 0.0};
}

// Absorption is charged on the vertical path whatever the angle, from the slice being entered.
cpx longitudinal_phase(const cpx& kz_t, const cpx& n_t, const StepOptions& step) {
  const double im = kz_t.imag() * step.dz;
  const bool is_absorbing = n_t.imag() != 0.0;
  return {kz_t.real() * step.dz, is_absorbing ? (step.k0 * n_t.imag()) * step.dz + im : im};
}

}  // namespace

std::vector<PlaneWave> plane_waves(const cpx* S, const cpx* KX, const cpx* KY, int ny, int nx) {
  const double fn = static_cast<double>(nx) * ny;
  std::vector<PlaneWave> waves;
  for (int q = 0; q < ny; ++q)
    for (int p = 0; p < nx; ++p) {
      const cpx s = S[static_cast<std::size_t>(q) * static_cast<std::size_t>(nx) +
                      static_cast<std::size_t>(p)];
      if (is_weak(s)) continue;
      // The sign undoes the shift of the grid's origin to the middle of the slice; exactly so for
      // even sizes.
      const double sign = (p + q) % 2 == 0 ? 1.0 : -1.0;
      const double kx = KX[p].real();
      const double ky = KY[q].real();
      waves.push_back(
          {{s.real() * sign / fn, s.imag() * sign / fn}, kx, ky, kx * kx + ky * ky, p, q});
    }
  return waves;
}

Mode mode_of(const PlaneWave& wave, const IndexPair& pair, const StepOptions& step) {
  const double n_i = pair.n_i.real();
  const double n_t = pair.n_t.real();
  const bool is_index_change = n_i != n_t;  // imaginary parts are not compared
  const bool is_internal_reflection = n_i > n_t;
  const bool is_external_reflection = n_t > n_i;

  const cpx kz_i = longitudinal(step.k0 * n_i, wave);
  const cpx kz_t = is_index_change ? longitudinal(step.k0 * n_t, wave) : kz_i;
  const bool is_evanescent_i = kz_i.real() == 0.0;
  const bool is_evanescent_t = kz_t.real() == 0.0;

  Mode mode{};
  mode.contributes = true;
  mode.kz = kz_t.real();
  mode.field_factor = step.is_magnetic_field ? n_t / (step.k0 * kVacuumImpedance) : 1.0;
  mode.phi_z = longitudinal_phase(kz_t, pair.n_t, step);
  mode.t = is_index_change ? transmission(pair, kz_i, kz_t, step) : cpx(1.0, 0.0);

  if (!is_evanescent_i && !is_evanescent_t) {  // propagating
    mode.amplitude = Mode::kTransmitted;
    mode.adds_flux = true;
  } else if (!step.do_evanescent_modes) {  // dropped
    mode.contributes = false;
  } else if (!is_evanescent_i && is_evanescent_t && is_internal_reflection) {  // frustrated
    mode.amplitude = Mode::kTransmitted;
  } else if (is_evanescent_i && !is_evanescent_t && is_external_reflection) {  // coupled in
    mode.amplitude = Mode::kTransmitted;
    mode.adds_flux = true;
  } else if (is_evanescent_i && !is_index_change) {  // evanescent throughout
    mode.amplitude = Mode::kUnchanged;
  } else {  // evanescent on both sides of a step: cut off there, yet the term is formed
    mode.amplitude = Mode::kCutOff;
  }
  return mode;
}
