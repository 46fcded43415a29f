#include "wpm/plane_sums.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "diagnostics.h"

namespace {

using Single = std::complex<float>;

constexpr double kTameAmplitude = 1e15;

template <typename T>
AlignedArray<T> allocate_aligned(std::size_t count) {
  auto* memory = static_cast<T*>(fftw_malloc(count * sizeof(T)));
  if (memory == nullptr)
    diagnostics::fail("no memory for a transform, " + std::to_string(count * sizeof(T)) +
                      " bytes; make nx and ny smaller");
  std::uninitialized_fill_n(memory, count, T());
  return AlignedArray<T>(memory);
}

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

// The plain product: operands here are finite, and the standard one's recovery of infinities keeps
// a loop from being vectorised.
cpx product(const cpx& a, const cpx& b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

// base + i * drift * correction.
cpx drifted(const cpx& base, double drift, const Single& correction) {
  return {base.real() - drift * static_cast<double>(correction.imag()),
          base.imag() + drift * static_cast<double>(correction.real())};
}

// z * number in single precision.
Single scaled(const cpx& z, double number) {
  return {static_cast<float>(z.real() * number), static_cast<float>(z.imag() * number)};
}

}  // namespace

BinnedSpectrum::BinnedSpectrum(const Axis& x, const Axis& y)
    : x_(x), y_(y), f_(at(x.n) * at(y.n)), power_(at(x.n) * at(y.n)), is_empty_row_(at(y.n)) {}

const cpx* BinnedSpectrum::row(int bin_y) const {
  return &f_[at(bin_y) * at(x_.n)];
}
const double* BinnedSpectrum::power_row(int bin_y) const {
  return &power_[at(bin_y) * at(x_.n)];
}
bool BinnedSpectrum::is_empty_row(int bin_y) const {
  return is_empty_row_[at(bin_y)] != 0;
}

void BinnedSpectrum::take(const cpx* S) {
  const double scale_to_one = 1.0 / (static_cast<double>(x_.n) * y_.n);
  std::size_t kept = 0;
  bool is_tame = true;
#pragma omp parallel for schedule(static) reduction(+ : kept) reduction(&& : is_tame)
  for (int b = 0; b < y_.n; ++b) {
    cpx* f = &f_[at(b) * at(x_.n)];
    double* power = &power_[at(b) * at(x_.n)];
    std::fill_n(f, x_.n, 0.0);
    std::fill_n(power, x_.n, 0.0);
    std::size_t kept_in_row = 0;
    // On odd sizes the last frequency shares bin 0 with the first.
    for (int q = 0; q < y_.n; ++q) {
      if (y_.bin[at(q)] != b) continue;
      const cpx* s = S + at(q) * at(x_.n);
      const bool is_turned = x_.n % 2 != 0 || y_.n % 2 != 0;
      for (int p = 0; p < x_.n; ++p) {
        if (is_weak(s[p])) continue;
        const cpx amplitude = s[p] * scale_to_one;
        const double modulus_sq = std::norm(amplitude);
        is_tame = is_tame && modulus_sq < kTameAmplitude * kTameAmplitude;
        const int bin = x_.bin[at(p)];
        power[bin] += modulus_sq;
        f[bin] +=
            is_turned ? product(amplitude, product(x_.phase[at(p)], y_.phase[at(q)])) : amplitude;
        ++kept_in_row;
      }
    }
    is_empty_row_[at(b)] = kept_in_row == 0 ? 1 : 0;
    kept += kept_in_row;
  }
  kept_ = kept;
  is_tame_ = is_tame;
}

PlaneSums::PlaneSums(const Axis& x, const Axis& y)
    : x_(x),
      y_(y),
      // An odd number of groups keeps the rows of a column out of each other's cache lines.
      row_step_(kColumns * (((x.n + kColumns - 1) / kColumns) | 1)),
      rows_(allocate_aligned<cpx>(at(row_step_) * at(y.n))),
      drifted_(allocate_aligned<Single>(at(row_step_) * at(y.n))) {
  const auto buffer = allocate_aligned<cpx>(at(std::max(x.n, kColumns * y.n)));
  const auto single = allocate_aligned<Single>(at(std::max(x.n, kColumns * y.n)));
  const fftwpp::many_layout row = {x.n, 1, 1, x.n, 1, x.n};
  const fftwpp::many_layout columns = {y.n, kColumns, row_step_, 1, kColumns, 1};
  row_ = std::make_unique<fftwpp::fft1d_many>(row, 1, rows_.get(), rows_.get());
  columns_ = std::make_unique<fftwpp::fft1d_many>(columns, 1, rows_.get(), buffer.get());
  row_drift_ = std::make_unique<fftwpp::fft1f_many>(row, 1, single.get(), single.get());
  columns_drift_ = std::make_unique<fftwpp::fft1f_many>(columns, 1, drifted_.get(), single.get());
  // Planning has left its traces, and columns beyond the grid must hold numbers.
  std::fill_n(rows_.get(), at(row_step_) * at(y.n), 0.0);
  std::fill_n(drifted_.get(), at(row_step_) * at(y.n), Single());
}

double PlaneSums::add(const BinnedSpectrum& spectrum, const Transfer& transfer,
                      const std::uint32_t* which, std::uint32_t pair, cpx* E) {
  const double flux = transform_rows(spectrum, transfer);
  transform_columns(which, pair, E);
  return flux;
}

double PlaneSums::transform_rows(const BinnedSpectrum& spectrum, const Transfer& transfer) {
  std::vector<double> flux(at(y_.n));  // row by row, so the sum does not depend on the threads
#pragma omp parallel
  {
    const auto drift = allocate_aligned<Single>(at(x_.n));
#pragma omp for schedule(static)
    for (int b = 0; b < y_.n; ++b) {
      cpx* row = rows_.get() + at(b) * at(row_step_);
      Single* drifted_row = drifted_.get() + at(b) * at(row_step_);
      if (spectrum.is_empty_row(b)) {
        std::fill_n(row, x_.n, 0.0);
        std::fill_n(drifted_row, x_.n, Single());
        continue;
      }
      const cpx* f = spectrum.row(b);
      const double* power = spectrum.power_row(b);
      const std::size_t fold = at(y_.fold[at(b)]) * at(x_.n);
      const cpx* field_factor = &transfer.field[fold];
      const double* flux_factor = &transfer.flux[fold];
      for (int a = 0; a < x_.n; ++a) {
        row[a] = product(f[a], field_factor[a]);
        drift[at(a)] = scaled(row[a], x_.number[at(a)]);
      }
      for (int a = 0; a < x_.n; ++a) flux[at(b)] += power[a] * flux_factor[a];
      row_->fft(row, row);
      row_drift_->fft(drift.get(), drift.get());
      for (int i = 0; i < x_.n; ++i) {
        row[i] = drifted(row[i], x_.drift[at(i)], drift[at(i)]);
        drifted_row[i] = scaled(row[i], y_.number[at(b)]);
      }
    }
  }
  return std::accumulate(flux.begin(), flux.end(), 0.0);
}

void PlaneSums::transform_columns(const std::uint32_t* which, std::uint32_t pair, cpx* E) const {
  const int groups = (x_.n + kColumns - 1) / kColumns;
#pragma omp parallel
  {
    const auto sums = allocate_aligned<cpx>(at(kColumns * y_.n));
    const auto drifts = allocate_aligned<Single>(at(kColumns * y_.n));
#pragma omp for schedule(dynamic)
    for (int group = 0; group < groups; ++group) {
      const int first = group * kColumns;
      const int end = std::min(first + kColumns, x_.n);
      const auto holds_pair = [&] {
        for (int j = 0; j < y_.n; ++j)
          for (int i = first; i < end; ++i)
            if (which[at(j) * at(x_.n) + at(i)] == pair) return true;
        return false;
      };
      if (!holds_pair()) continue;
      columns_->fft(rows_.get() + first, sums.get());
      columns_drift_->fft(drifted_.get() + first, drifts.get());
      for (int j = 0; j < y_.n; ++j)
        for (int i = first; i < end; ++i) {
          const std::size_t sample = at(j) * at(x_.n) + at(i);
          const std::size_t sum = at(j * kColumns + i - first);
          if (which[sample] == pair) E[sample] += drifted(sums[sum], y_.drift[at(j)], drifts[sum]);
        }
    }
  }
}
