// The physics of one plane wave across one step, from index n_i to index n_t. It depends on the
// wave and on the pair of indices alone, not on where the sample lies.
//
// This is the device's own arithmetic. The CPU path has the same physics with the mathematics
// library's root and a trim in double precision; both stand as they are, to the last rounding.
#pragma once

#include "kernel/complex.cuh"

namespace device {

inline constexpr double kVacuumImpedance = 376.73031346;  // ohm
inline constexpr double kTrimGrid = 0.0001;

struct ModeRules {
  bool do_evanescent_modes;  // carry waves that are evanescent before or behind the step
  bool is_magnetic_field;    // scale the field by the admittance of the medium
  bool is_TE;                // TE transmission, else TM
  bool is_trimmed = true;    // transmission, onto a grid of 0.0001
};

// Weakest plane wave that is carried, on the raw transform, before sign and normalisation:
// absolute, whatever the grid and the field.
inline constexpr double kWeakest = 0.0001;

// Plane wave (p, q) of the raw transform S [ny][nx], normalised, in *f; false if it is too weak.
__device__ inline bool normalised_amplitude(const Complex* S, int p, int q, int nx, int ny,
                                            Complex* f) {
  const Complex s = S[q * nx + p];
  if (cuCabs(s) < kWeakest) return false;
  const double sign = (p + q) % 2 == 0 ? 1.0 : -1.0;  // the grid's origin is its middle
  const double fn = nx * ny;
  *f = make_cuDoubleComplex(s.x * sign / fn, s.y * sign / fn);
  return true;
}

// What a step between two indices costs once for all waves.
struct IndexPair {
  double nk0_i, nk0_t;        // k0*Re(n), rad/m
  double nk0_i_sq, nk0_t_sq;  // their squares
  Complex n_i_sq, n_t_sq;
  Complex twice_n_i_n_t;
  double absorption;      // Im(n_t)*k0*dz, added to the longitudinal phase
  double magnetic_scale;  // Re(n_t)/(k0*Z0), of the real part only
  bool is_index_change;   // of the real parts alone; true if they are unordered
  bool is_internal_reflection, is_external_reflection;
  bool is_absorbing;
};

struct DeviceMode {
  bool contributes;  // false: neither field nor flux
  bool updates_flux;
  Complex f_t;    // amplitude behind the step, with the magnetic scale where it is asked for
  Complex phi_z;  // longitudinal phase of the step; the lateral one is added to its real part
  double flux;    // Re(kz_t)*|f_t|^2, without the magnetic scale; 0 if it isn't to be added
};

__device__ inline IndexPair index_pair(Complex n_i, Complex n_t, double k0, double dz) {
  IndexPair pair;
  pair.nk0_i = n_i.x * k0;
  pair.nk0_t = n_t.x * k0;
  pair.nk0_i_sq = pow(pair.nk0_i, 2.0);
  pair.nk0_t_sq = pow(pair.nk0_t, 2.0);
  pair.n_i_sq = cuCmul(n_i, n_i);
  pair.n_t_sq = cuCmul(n_t, n_t);
  pair.twice_n_i_n_t = cuCmul(scale(n_i, 2.0), n_t);
  pair.absorption = n_t.y * k0 * dz;
  pair.magnetic_scale = n_t.x / (k0 * kVacuumImpedance);
  pair.is_index_change = n_i.x != n_t.x;
  pair.is_internal_reflection = n_i.x > n_t.x;
  pair.is_external_reflection = n_i.x < n_t.x;
  pair.is_absorbing = n_t.y != 0.0;
  return pair;
}

// kz = nk0*sqrt(1 - kxy^2/nk0^2), the dispersion relation of a plane wave; positive imaginary when
// the lateral frequency is too high to propagate.
__device__ inline Complex longitudinal(double nk0, double nk0_sq, double kxy_sq,
                                       bool is_vertical_incidence) {
  if (is_vertical_incidence) return make_cuDoubleComplex(nk0, 0.0);
  const double a = kxy_sq / nk0_sq;
  return scale(root(make_cuDoubleComplex(1.0 - a, 0.0 - a * 0.0)), nk0);
}

// Downwards onto the grid of 0.0001. The detour through single precision belongs to it: a quotient
// within single rounding of a whole number is taken for that number.
__device__ inline double trim(double value) {
  return static_cast<double>(floorf(static_cast<float>(value / kTrimGrid))) * kTrimGrid;
}

// Fresnel's amplitude transmission (Born and Wolf, Principles of Optics, 1.5.2). Where
// numerator and denominator vanish together, at grazing incidence on both sides, the wave passes.
__device__ inline Complex transmission(const IndexPair& pair, Complex kz_i, Complex kz_t,
                                       bool is_TE, bool is_trimmed = true) {
  const Complex numerator = is_TE ? scale(kz_i, 2.0) : cuCmul(pair.twice_n_i_n_t, kz_i);
  const Complex denominator =
      is_TE ? cuCadd(kz_i, kz_t) : cuCadd(cuCmul(pair.n_t_sq, kz_i), cuCmul(pair.n_i_sq, kz_t));
  const Complex t =
      cuCabs(denominator) == 0.0 ? make_cuDoubleComplex(1.0, 0.0) : cuCdiv(numerator, denominator);
  return is_trimmed ? make_cuDoubleComplex(trim(t.x), trim(t.y)) : t;
}

// f is the wave's normalised amplitude before the step, kxy_sq its squared lateral frequency.
__device__ inline DeviceMode mode_for_pair(const IndexPair& pair, Complex f, double kxy_sq,
                                           bool is_vertical_incidence, double dz, ModeRules rules) {
  const Complex kz_i = longitudinal(pair.nk0_i, pair.nk0_i_sq, kxy_sq, is_vertical_incidence);
  const Complex kz_t = pair.is_index_change
                           ? longitudinal(pair.nk0_t, pair.nk0_t_sq, kxy_sq, is_vertical_incidence)
                           : kz_i;
  const bool is_evanescent_mode_i = kz_i.x == 0.0;
  const bool is_evanescent_mode_t = kz_t.x == 0.0;

  DeviceMode mode = {};
  const bool is_propagating = !is_evanescent_mode_i && !is_evanescent_mode_t;
  if (!is_propagating && !rules.do_evanescent_modes) return mode;
  mode.contributes = true;

  const bool is_frustrated =
      !is_evanescent_mode_i && is_evanescent_mode_t && pair.is_internal_reflection;
  const bool is_coupled_in =
      is_evanescent_mode_i && !is_evanescent_mode_t && pair.is_external_reflection;
  const bool is_evanescent_throughout = is_evanescent_mode_i && !pair.is_index_change;
  if (is_propagating || is_frustrated || is_coupled_in) {
    const Complex t = pair.is_index_change
                          ? transmission(pair, kz_i, kz_t, rules.is_TE, rules.is_trimmed)
                          : make_cuDoubleComplex(1.0, 0.0);
    mode.f_t = cuCmul(f, t);
  } else if (is_evanescent_throughout) {
    mode.f_t = f;
  }  // else cut off at the step: a term of zero is still a term

  mode.updates_flux = is_propagating || is_coupled_in;
  if (mode.updates_flux) mode.flux = kz_t.x * pow(cuCabs(mode.f_t), 2.0);
  if (rules.is_magnetic_field) mode.f_t = scale(mode.f_t, pair.magnetic_scale);

  mode.phi_z = scale(kz_t, dz);
  if (pair.is_absorbing) mode.phi_z.y = pair.absorption + mode.phi_z.y;
  return mode;
}

}  // namespace device
