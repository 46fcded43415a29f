#include "wpm/fresnel.h"

#include <cmath>

#include "wpm/wpm.h"

namespace {

// Rounding each coefficient down to this grid is part of the method's definition.
constexpr double kTrimGrid = 0.0001;

}  // namespace

void trim(cpx& c) {
  c = cpx(std::floor(c.real() / kTrimGrid) * kTrimGrid,
          std::floor(c.imag() / kTrimGrid) * kTrimGrid);
}

namespace wpm {

cpx transmission_TE(const cpx& kz_i, const cpx& kz_t) {
  const cpx denom = kz_i + kz_t;
  if (std::abs(denom) == 0.0) return {1.0, 0.0};
  return (kz_i / denom) * cpx(2.0, 0.0);
}

cpx transmission_TM(const cpx& n_i, const cpx& n_t, const cpx& kz_i, const cpx& kz_t) {
  const cpx denom = (n_i * n_i) * kz_t + (n_t * n_t) * kz_i;
  if (std::abs(denom) == 0.0) return {1.0, 0.0};
  return ((n_i * n_t) * (kz_i / denom)) * cpx(2.0, 0.0);
}

}  // namespace wpm

cpx fresnelTTE(const cpx& kz_i, const cpx& kz_t) {
  cpx tte = wpm::transmission_TE(kz_i, kz_t);
  trim(tte);
  return tte;
}

cpx fresnelTTM(const cpx& n_i, const cpx& n_t, const cpx& kz_i, const cpx& kz_t) {
  cpx ttm = wpm::transmission_TM(n_i, n_t, kz_i, kz_t);
  trim(ttm);
  return ttm;
}
