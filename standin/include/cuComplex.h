// Complex arithmetic of device code: plain products without recovery of infinities, a magnitude and
// a quotient that are scaled against overflow.
#pragma once

#include <cmath>

#include "cuda_runtime.h"

typedef double2 cuDoubleComplex;

inline double cuCreal(cuDoubleComplex z) {
  return z.x;
}
inline double cuCimag(cuDoubleComplex z) {
  return z.y;
}
inline cuDoubleComplex make_cuDoubleComplex(double re, double im) {
  return {re, im};
}

inline cuDoubleComplex cuCadd(cuDoubleComplex a, cuDoubleComplex b) {
  return {a.x + b.x, a.y + b.y};
}

inline cuDoubleComplex cuCmul(cuDoubleComplex a, cuDoubleComplex b) {
  return {a.x * b.x - a.y * b.y, a.x * b.y + a.y * b.x};
}

// Both operands are scaled by the reciprocal of |re b| + |im b|, so that the square of the
// denominator neither overflows nor vanishes.
inline cuDoubleComplex cuCdiv(cuDoubleComplex a, cuDoubleComplex b) {
  const double scale = 1.0 / (std::fabs(b.x) + std::fabs(b.y));
  const cuDoubleComplex p{a.x * scale, a.y * scale};
  const cuDoubleComplex q{b.x * scale, b.y * scale};
  const double reciprocal = 1.0 / (q.x * q.x + q.y * q.y);
  return {(p.x * q.x + p.y * q.y) * reciprocal, (p.y * q.x - p.x * q.y) * reciprocal};
}

// v*sqrt(1 + (w/v)^2) with v the larger and w the smaller part; 0 has no larger part, and infinity
// none that divides.
inline double cuCabs(cuDoubleComplex z) {
  const double re = std::fabs(z.x);
  const double im = std::fabs(z.y);
  const double v = re > im ? re : im;
  const double w = re > im ? im : re;
  if (v == 0.0 || std::isinf(v)) return v + w;
  const double ratio = w / v;
  return v * std::sqrt(1.0 + ratio * ratio);
}
