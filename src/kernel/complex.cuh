// Complex numbers on the device, beyond what cuComplex.h has.
#pragma once

#include <cuComplex.h>

#include <cmath>

namespace device {

using Complex = cuDoubleComplex;

__device__ inline Complex scale(Complex z, double factor) {
  return make_cuDoubleComplex(z.x * factor, z.y * factor);
}

// The square root in the right half plane, by the half-angle formulas; its imaginary part has the
// sign of z's, a zero's sign included. For z on the negative real axis c is exactly -1, so that the
// real part is exactly 0: what is evanescent is told by this zero.
__device__ inline Complex root(Complex z) {
  if (z.x == 0.0 && z.y == 0.0) return make_cuDoubleComplex(0.0, 0.0);
  const double m = cuCabs(z);
  const double c = z.x / m;
  return make_cuDoubleComplex(sqrt((c + 1.0) * m * 0.5), copysign(sqrt((1.0 - c) * m * 0.5), z.y));
}

// exp(i*phi) for a complex phase.
__device__ inline Complex exp_i(Complex phi) {
  double sine = 0.0;
  double cosine = 0.0;
  sincos(phi.x, &sine, &cosine);
  return scale(make_cuDoubleComplex(cosine, sine), exp(-phi.y));
}

}  // namespace device
