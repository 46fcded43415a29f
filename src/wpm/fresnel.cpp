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

cpx fresnelTTE(const cpx& kz_i, const cpx& kz_t) {
  const cpx denom = kz_i + kz_t;
  cpx tte(1.0, 0.0);
  if (std::abs(denom) != 0.0) tte = (kz_i / denom) * cpx(2.0, 0.0);
  trim(tte);
  return tte;
}

cpx fresnelTTM(const cpx& n_i, const cpx& n_t, const cpx& kz_i, const cpx& kz_t) {
  const cpx denom = (n_i * n_i) * kz_t + (n_t * n_t) * kz_i;
  cpx ttm(1.0, 0.0);
  if (std::abs(denom) != 0.0) ttm = ((n_i * n_t) * (kz_i / denom)) * cpx(2.0, 0.0);
  trim(ttm);
  return ttm;
}
