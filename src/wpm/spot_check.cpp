#include "wpm/spot_check.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace wpm {
namespace {

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

// exp(i K X) of sample i for each bin, all but the phase that the amplitudes hold.
std::vector<cpx> lateral_phases(const Axis& axis, int i) {
  std::vector<cpx> phases;
  for (int bin = 0; bin < axis.n; ++bin) {
    const auto turns = static_cast<double>(std::int64_t{bin} * i % axis.n) / axis.n;
    phases.push_back(
        std::polar(1.0, 2.0 * std::numbers::pi * turns + axis.drift[at(i)] * axis.number[at(bin)]));
  }
  return phases;
}

}  // namespace

cpx field_at(int j, int i, const BinnedSpectrum& spectrum, const Transfer& transfer, const Axis& x,
             const Axis& y) {
  const std::vector<cpx> along_x = lateral_phases(x, i);
  const std::vector<cpx> along_y = lateral_phases(y, j);
  cpx sum = 0.0;
  for (int bin_x = 0; bin_x < x.n; ++bin_x) {
    if (spectrum.is_empty(bin_x)) continue;
    const cpx* f = spectrum.column(bin_x);
    const cpx* factor = transfer.field.data() + at(std::min(bin_x, x.n - bin_x)) * at(y.folds);
    cpx column = 0.0;
    for (int bin_y = 0; bin_y < y.n; ++bin_y)
      column += f[bin_y] * factor[std::min(bin_y, y.n - bin_y)] * along_y[at(bin_y)];
    sum += column * along_x[at(bin_x)];
  }
  return sum;
}

}  // namespace wpm
