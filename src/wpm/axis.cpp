#include "wpm/axis.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numbers>

#include "constants.h"

namespace wpm {
namespace {

// The number m of frequency p in units of the axis's step.
int frequency_number(int p, int n) {
  const int half = n / 2;
  if (p >= 2 * half) return 0;  // odd sizes: the last one is left at 0
  return p < half ? p : p - 2 * half;
}

// exp(i pi a/b), exact where it is 1 or -1.
cpx turn(std::int64_t a, std::int64_t b) {
  a %= 2 * b;
  if (a < 0) a += 2 * b;
  if (a == 0) return 1.0;
  if (a == b) return -1.0;
  return std::polar(1.0, std::numbers::pi * static_cast<double>(a) / static_cast<double>(b));
}

}  // namespace

Axis::Axis(int n_) : n(n_), folds(n_ / 2 + 1) {
  const auto count = static_cast<std::size_t>(n);
  const int centre = n / 2;
  bin.resize(count);
  phase.resize(count);
  number.assign(count, 0.0);
  fold.assign(count, 0);
  drift.resize(count);
  for (int p = 0; p < n; ++p) {
    const int m = frequency_number(p, n);
    const int b = m < 0 ? m + n : m;
    const auto at = static_cast<std::size_t>(p);
    bin[at] = b;
    phase[at] = turn(-std::int64_t{2} * centre * m + std::int64_t{n} * (p % 2), n);
    number[static_cast<std::size_t>(b)] = m;
    fold[static_cast<std::size_t>(b)] = std::abs(m);
  }
  const double d = (kTwoPi - 2.0 * std::numbers::pi) / n;
  for (int i = 0; i < n; ++i) drift[static_cast<std::size_t>(i)] = d * (i - centre);
}

bool is_regular(const cpx* K, const double* X, int n) {
  if (n < 2) return n == 1 && K[0] == 0.0 && X[0] == 0.0;
  const int half = n / 2;
  const double spacing = -X[0] / half;
  const double step = -K[half].real() / half;
  if (!(std::fabs(spacing * step * n / kTwoPi - 1.0) < 1e-12)) return false;
  for (int i = 0; i < n; ++i) {
    const double position = (i - half) * spacing;
    const double frequency = frequency_number(i, n) * step;
    if (!(std::fabs(X[i] - position) <= 1e-12 * n * std::fabs(spacing))) return false;
    if (!(std::fabs(K[i].real() - frequency) <= 1e-12 * n * std::fabs(step))) return false;
  }
  return true;
}

}  // namespace wpm
