// One axis of a slice as the bins of a discrete transform.
//
// With positions (i - c) dx, c = floor(n/2), and frequencies m * 6.2831853/(n dx), a plane wave is
//
//   exp(i kx x) = exp(2 pi i i m/n) * exp(-2 pi i c m/n) * exp(i d (i - c) m),
//   d = (6.2831853 - 2 pi)/n:
//
// the transform's own factor, a turn of each frequency, and a drift that is tiny and taken to first
// order. Frequency number m stands in bin m mod n. On odd sizes the last frequency is 0 again and
// shares bin 0 with the first, and the bin in the middle stays empty.
#pragma once

#include "kernel/complex.cuh"

namespace device {

inline constexpr double kPi = 3.14159265358979323846;

// The frequencies, by their places in transform order, that stand in a bin: none, one or two.
__device__ inline int frequencies_of_bin(int bin, int n, int frequencies[2]) {
  if (n % 2 == 0) {
    frequencies[0] = bin;
    return 1;
  }
  if (bin == 0) {
    frequencies[0] = 0;
    frequencies[1] = n - 1;
    return n > 1 ? 2 : 1;
  }
  if (bin == n / 2) return 0;
  frequencies[0] = bin < n / 2 ? bin : bin - 1;
  return 1;
}

// The frequency number m of a bin; 0 if it is empty.
__device__ inline int number_of_bin(int bin, int n) {
  if (n % 2 != 0 && bin == n / 2) return 0;
  return bin < n / 2 ? bin : bin - n;
}

// |m|: transfer functions are even. Frequency number |m| is that of place |m| in transform order,
// up to its sign.
__device__ inline int fold_of_bin(int bin, int n) {
  const int number = number_of_bin(bin, n);
  return number < 0 ? -number : number;
}
inline int folds_of(int n) {
  return n / 2 + 1;
}

// exp(-2 pi i c m/n) of the frequency at place p, with the sign (-1)^p of the grid's middle taken
// off: exactly 1 on even sizes.
__device__ inline Complex turn(int p, int n) {
  if (n % 2 == 0) return make_cuDoubleComplex(1.0, 0.0);
  const int half = n / 2;
  const long long m = p >= 2 * half ? 0 : p < half ? p : p - 2 * half;
  const long long half_turns = ((-2 * half * m + n * (p % 2)) % (2 * n) + 2 * n) % (2 * n);
  double sine = 0.0;
  double cosine = 0.0;
  sincos(kPi * static_cast<double>(half_turns) / n, &sine, &cosine);
  return make_cuDoubleComplex(cosine, sine);
}

}  // namespace device
