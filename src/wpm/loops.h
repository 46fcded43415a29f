// The loops over samples that the fast sums spend their time in. Complex arrays are pairs of
// numbers, n counts complex values.
#pragma once

#include <cstddef>

#include "system/system.h"

namespace wpm {

// Amplitudes of this size and more are not tame: sums of them, times transfer functions, have no
// room in the single precision of the corrections.
constexpr double kTameAmplitude = 1e15;

// Raw transform values to amplitudes.
struct Taken {
  std::size_t kept = 0;  // that are not weak
  bool is_tame = true;   // finite and far from overflow, so that their squares are
};
// f = S * scale, weak values to 0.
Taken take_amplitudes(int n, const cpx* S, double scale, cpx* f);

// row[q] = f[q] * factor[min(q, n - q)], and drifted = row * number in single precision.
//   factor  [n/2 + 1];  number  [2n], each twice
void apply_transfer(int n, const cpx* f, const cpx* factor, const float* number, cpx* row,
                    std::complex<float>* drifted);

// Eight lines side by side, [n][8]: drifted = lines * number in single precision; number is [2n],
// each twice.
void drift_lines(int n, const cpx* lines, const float* number, std::complex<float>* drifted);
// drifted = row * number in single precision.
void times_number(int n, const cpx* row, const float* number, std::complex<float>* drifted);

// Eight lines, step apart, as blocks of 8 x 8 values, line by line, that are block_step apart; n is
// a multiple of 8.
void copy_into_blocks(int n, const cpx* row, std::size_t step, cpx* blocks, std::size_t block_step);
// The same of row + i * drift * correction; drift is [2n]: -drift, drift for each value.
void correct_into_blocks(int n, const cpx* row, const std::complex<float>* correction,
                         std::size_t step, const double* drift, cpx* blocks,
                         std::size_t block_step);
// out += row + i * drift * correction.
void add_corrected(int n, const cpx* row, const std::complex<float>* correction,
                   const double* drift, cpx* out);
// out += weight * the same, each value with its own.
void add_weighted(int n, const cpx* row, const std::complex<float>* correction, const double* drift,
                  const cpx* weight, cpx* out);

// power[q] = |f[q]|^2 + |g[q]|^2; without g the first alone.
void power_of(int n, const cpx* f, const cpx* g, double* power);
// power[q] += power[n - q] for 0 < q < n - q.
void fold_power(int n, double* power);
// The sum of power * factor, in strands of a fixed order.
double weighted_sum(int n, const double* power, const double* factor);

// How many of the n > 0 samples from the first on have the same bits as it.
int length_of_run(int n, const cpx* N);

}  // namespace wpm
