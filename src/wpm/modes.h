// What one plane wave does across one step, at every sample of one pair of indices.
#pragma once

#include <cmath>
#include <vector>

#include "wpm/wpm.h"

// A plane wave of a slice's spectrum, normalised; (p, q) is its place in transform order.
struct PlaneWave {
  cpx f;
  double kx, ky;  // rad/m
  double kxy_sq;  // kx^2 + ky^2
  int p, q;

  // The plane wave of frequency zero. On odd grids others have kx = ky = 0 too and are not it.
  [[nodiscard]] bool is_vertical_incidence() const { return p == 0 && q == 0; }
};

// Whether a raw transform value is below 0.0001 in modulus: such plane waves are dropped. The bound
// is absolute, so a field that is weak everywhere is lost.
inline bool is_weak(const cpx& s) {
  constexpr double kSpectrumCutOff = 0.0001;
  // The modulus lies between the larger part and the sum of the two; it is worked out only where
  // that leaves the answer open. A NaN is not weak.
  const double re = std::fabs(s.real());
  const double im = std::fabs(s.imag());
  if (re >= kSpectrumCutOff || im >= kSpectrumCutOff) return false;
  if (re + im < 0.9999 * kSpectrumCutOff) return true;
  return std::abs(s) < kSpectrumCutOff;
}

// The plane waves of S, the raw transform of a slice, [ny][nx], in order of q, then p, without the
// weak ones.
std::vector<PlaneWave> plane_waves(const cpx* S, const cpx* KX, const cpx* KY, int ny, int nx);

// The indices on either side of a step at a sample.
struct IndexPair {
  cpx n_i, n_t;
};

// What holds for all steps of a run.
struct StepOptions {
  double k0, dz;
  bool do_evanescent_modes;
  bool is_magnetic_field;
  polarization pol;
  bool is_trimmed = true;  // transmission coefficients, to a grid of 0.0001
  double tolerance = 0;    // of the field; above 0 the fast stepper may interpolate between pairs
};

// The action of a plane wave of amplitude 1 on a pair, all but the lateral phase.
struct Mode {
  enum Amplitude { kTransmitted, kUnchanged, kCutOff };

  bool contributes;  // false: the sample gets no term at all
  bool adds_flux;
  Amplitude amplitude;
  cpx t;                // transmission
  cpx phi_z;            // longitudinal phase, absorption included
  double kz;            // real part of kz_t
  double field_factor;  // of the magnetic field; 1 for the electric one

  // The amplitude behind the step of a plane wave of amplitude f.
  [[nodiscard]] cpx transmitted(const cpx& f) const {
    switch (amplitude) {
      case kTransmitted:
        return t * f;
      case kUnchanged:
        return f;
      case kCutOff:
        break;
    }
    return {0.0, 0.0};
  }

  // What a plane wave of transmitted amplitude f_t adds to the flux.
  [[nodiscard]] double flux(const cpx& f_t) const {
    const double modulus = std::abs(f_t);
    return (modulus * modulus) * kz;
  }
};

Mode mode_of(const PlaneWave& wave, const IndexPair& pair, const StepOptions& step);
