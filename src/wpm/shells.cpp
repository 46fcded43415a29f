#include "wpm/shells.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "wpm/threads.h"

namespace wpm {

Shells::Shells(const FoldedFrequencies& folds) : power_(kCount) {
  const auto largest = [](const std::vector<double>& k) {
    double square = 0.0;
    for (const double value : k) square = std::max(square, value * value);
    return square;
  };
  width_ = (largest(folds.kx) + largest(folds.ky)) / kCount;
  for (const double kx : folds.kx) {
    std::vector<std::uint16_t>& row = shell_of_.emplace_back();
    for (const double ky : folds.ky)
      row.push_back(static_cast<std::uint16_t>(
          std::min(kCount - 1.0, width_ > 0 ? (kx * kx + ky * ky) / width_ : 0.0)));
  }
}

void Shells::take(const BinnedSpectrum& spectrum, const Axis& x, const Axis& y) {
  // A column's own sums first, then these in order, so that no sum depends on the threads.
  const auto columns = at(x.n);
  std::vector<double> sums(columns * kCount);
  constexpr double kPlaneWave = 1.5;  // ns
  share_out(x.n, kPlaneWave * x.n * y.n, [&](int bin_x, int /*worker*/) {
    if (spectrum.is_empty(bin_x)) return;
    double* power = &sums[at(bin_x) * kCount];
    const auto& shell_of = shell_of_[at(std::min(bin_x, x.n - bin_x))];
    const cpx* f = spectrum.column(bin_x);
    for (int bin_y = 0; bin_y < y.n; ++bin_y)
      power[shell_of[at(std::min(bin_y, y.n - bin_y))]] += std::norm(f[bin_y]);
  });
  std::fill(power_.begin(), power_.end(), 0.0);
  for (std::size_t column = 0; column < columns; ++column)
    for (std::size_t shell = 0; shell < kCount; ++shell)
      power_[shell] += sums[column * kCount + shell];
}

double Shells::total_power() const {
  return std::accumulate(power_.begin(), power_.end(), 0.0);
}

}  // namespace wpm
