#include "wpm/plane_sums.h"

#include <omp.h>

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

// The loops over a row are compiled once more for processors with wider registers and chosen when
// the program is loaded. Neither form contracts or reorders arithmetic, so both give the same bits.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define ZERITH_WIDE [[gnu::target_clones("avx2", "default")]]
#else
#define ZERITH_WIDE
#endif

// The plain product: operands here are finite, and the standard one's recovery of infinities keeps
// a loop from being vectorised.
cpx product(const cpx& a, const cpx& b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

// Complex arrays as the pairs of numbers that they are: loops over these are vectorised, loops over
// complex objects are not.
const double* parts(const cpx* z) {
  return reinterpret_cast<const double*>(z);
}
double* parts(cpx* z) {
  return reinterpret_cast<double*>(z);
}
float* parts(Single* z) {
  return reinterpret_cast<float*>(z);
}

// row = f * factor, and drift = row * number.
ZERITH_WIDE void apply_transfer(int n, const double* __restrict f, const double* __restrict factor,
                                const double* __restrict number, double* __restrict row,
                                float* __restrict drift) {
  for (int a = 0; a < n; ++a) {
    const double re = f[2 * a] * factor[2 * a] - f[2 * a + 1] * factor[2 * a + 1];
    const double im = f[2 * a] * factor[2 * a + 1] + f[2 * a + 1] * factor[2 * a];
    row[2 * a] = re;
    row[2 * a + 1] = im;
    drift[2 * a] = static_cast<float>(re * number[a]);
    drift[2 * a + 1] = static_cast<float>(im * number[a]);
  }
}

// row = row + i * drift * correction, and drifted_row = row * number.
ZERITH_WIDE void correct_row(int n, const float* __restrict correction,
                             const double* __restrict drift, double number, double* __restrict row,
                             float* __restrict drifted_row) {
  for (int i = 0; i < n; ++i) {
    const double re = row[2 * i] - drift[i] * static_cast<double>(correction[2 * i + 1]);
    const double im = row[2 * i + 1] + drift[i] * static_cast<double>(correction[2 * i]);
    row[2 * i] = re;
    row[2 * i + 1] = im;
    drifted_row[2 * i] = static_cast<float>(re * number);
    drifted_row[2 * i + 1] = static_cast<float>(im * number);
  }
}

constexpr int kColumns = 8;  // transformed together
constexpr std::uint32_t kNoPair = UINT32_MAX;

// out = sum + i * drift * correction for the samples of a group of columns that have the pair.
//   sum, correction  [rows][kColumns];  which, out  [rows][row_step]
ZERITH_WIDE void place_where(int rows, int row_step, const double* __restrict sum,
                             const float* __restrict correction, const double* __restrict drift,
                             const std::uint32_t* __restrict which, std::uint32_t pair,
                             double* __restrict out) {
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < kColumns; ++i) {
      const double re = sum[2 * i] - drift[j] * static_cast<double>(correction[2 * i + 1]);
      const double im = sum[2 * i + 1] + drift[j] * static_cast<double>(correction[2 * i]);
      out[2 * i] = which[i] == pair ? re : out[2 * i];
      out[2 * i + 1] = which[i] == pair ? im : out[2 * i + 1];
    }
    sum += 2 * kColumns;
    correction += 2 * kColumns;
    which += row_step;
    out += 2 * row_step;
  }
}

// The sum of power * factor, in four strands: one chain of additions would be all latency.
ZERITH_WIDE double weighted_sum(int n, const double* __restrict power,
                                const double* __restrict factor) {
  double strands[4] = {0.0, 0.0, 0.0, 0.0};
  int a = 0;
  for (; a + 4 <= n; a += 4)
    for (int strand = 0; strand < 4; ++strand)
      strands[strand] += power[a + strand] * factor[a + strand];
  for (; a < n; ++a) strands[0] += power[a] * factor[a];
  return (strands[0] + strands[1]) + (strands[2] + strands[3]);
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
  std::size_t kept = 0;
  bool is_tame = true;
#pragma omp parallel for schedule(static) reduction(+ : kept) reduction(&& : is_tame)
  for (int b = 0; b < y_.n; ++b) {
    std::fill_n(&f_[at(b) * at(x_.n)], x_.n, 0.0);
    std::fill_n(&power_[at(b) * at(x_.n)], x_.n, 0.0);
    std::size_t kept_in_row = 0;
    // On odd sizes the last frequency shares bin 0 with the first.
    for (int q = 0; q < y_.n; ++q)
      if (y_.bin[at(q)] == b) kept_in_row += add_row(S + at(q) * at(x_.n), q, is_tame);
    is_empty_row_[at(b)] = kept_in_row == 0 ? 1 : 0;
    kept += kept_in_row;
  }
  kept_ = kept;
  is_tame_ = is_tame;
}

std::size_t BinnedSpectrum::add_row(const cpx* s, int q, bool& is_tame) {
  const double to_amplitude = 1.0 / (static_cast<double>(x_.n) * y_.n);
  const bool is_turned = x_.n % 2 != 0 || y_.n % 2 != 0;
  cpx* f = &f_[at(y_.bin[at(q)]) * at(x_.n)];
  double* power = &power_[at(y_.bin[at(q)]) * at(x_.n)];
  double largest = 0.0;
  std::size_t kept = 0;
  for (int p = 0; p < x_.n; ++p) {
    if (is_weak(s[p])) continue;
    const cpx amplitude = s[p] * to_amplitude;
    const double modulus_sq = std::norm(amplitude);
    if (!(modulus_sq <= largest)) largest = modulus_sq;
    const int bin = x_.bin[at(p)];
    power[bin] += modulus_sq;
    f[bin] += is_turned ? product(amplitude, product(x_.phase[at(p)], y_.phase[at(q)])) : amplitude;
    ++kept;
  }
  if (!(largest < kTameAmplitude * kTameAmplitude)) is_tame = false;
  return kept;
}

PlaneSums::PlaneSums(const Axis& x, const Axis& y)
    : x_(x),
      y_(y),
      // An odd number of groups keeps the rows of a column out of each other's cache lines.
      row_step_(kColumns * (((x.n + kColumns - 1) / kColumns) | 1)),
      rows_(allocate_aligned<cpx>(at(row_step_) * at(y.n))),
      drifted_(allocate_aligned<Single>(at(row_step_) * at(y.n))),
      sums_(allocate_aligned<cpx>(at(row_step_) * at(y.n))),
      which_(allocate_aligned<std::uint32_t>(at(row_step_) * at(y.n))),
      row_flux_(at(y.n)) {
  for (int thread = 0; thread < omp_get_max_threads(); ++thread)
    workspaces_.push_back({allocate_aligned<Single>(at(x.n)),
                           allocate_aligned<cpx>(at(kColumns * y.n)),
                           allocate_aligned<Single>(at(kColumns * y.n))});
  const Workspace& work = workspaces_.front();
  const fftwpp::many_layout row = {x.n, 1, 1, x.n, 1, x.n};
  const fftwpp::many_layout columns = {y.n, kColumns, row_step_, 1, kColumns, 1};
  row_ = std::make_unique<fftwpp::fft1d_many>(row, 1, rows_.get(), rows_.get());
  columns_ = std::make_unique<fftwpp::fft1d_many>(columns, 1, rows_.get(), work.columns.get());
  row_drift_ =
      std::make_unique<fftwpp::fft1f_many>(row, 1, work.row_drift.get(), work.row_drift.get());
  columns_drift_ =
      std::make_unique<fftwpp::fft1f_many>(columns, 1, drifted_.get(), work.column_drift.get());
  // Planning has left its traces, and columns beyond the grid must hold numbers.
  std::fill_n(rows_.get(), at(row_step_) * at(y.n), 0.0);
  std::fill_n(drifted_.get(), at(row_step_) * at(y.n), Single());
}

void PlaneSums::begin(const std::uint32_t* which) {
  std::fill_n(which_.get(), at(row_step_) * at(y_.n), kNoPair);
  for (int j = 0; j < y_.n; ++j)
    std::copy_n(which + at(j) * at(x_.n), x_.n, which_.get() + at(j) * at(row_step_));
}

double PlaneSums::add(const BinnedSpectrum& spectrum, const Transfer& transfer,
                      std::uint32_t pair) {
#pragma omp parallel
  {
    Workspace& work = workspaces_[at(omp_get_thread_num())];
#pragma omp for schedule(static)
    for (int b = 0; b < y_.n; ++b) row_flux_[at(b)] = transform_row(b, spectrum, transfer, work);
#pragma omp for schedule(static)
    for (int first = 0; first < x_.n; first += kColumns) transform_columns(first, pair, work);
  }
  // Row by row, so that the sum does not depend on the threads.
  return std::accumulate(row_flux_.begin(), row_flux_.end(), 0.0);
}

void PlaneSums::finish(cpx* E) const {
#pragma omp parallel for schedule(static)
  for (int j = 0; j < y_.n; ++j) {
    const cpx* sums = sums_.get() + at(j) * at(row_step_);
    cpx* row = E + at(j) * at(x_.n);
    for (int i = 0; i < x_.n; ++i) row[i] += sums[i];
  }
}

// Row bin_y of the amplitudes, transformed and corrected for the drift in x; returns its flux.
double PlaneSums::transform_row(int bin_y, const BinnedSpectrum& spectrum, const Transfer& transfer,
                                Workspace& work) {
  cpx* row = rows_.get() + at(bin_y) * at(row_step_);
  Single* drifted_row = drifted_.get() + at(bin_y) * at(row_step_);
  if (spectrum.is_empty_row(bin_y)) {
    std::fill_n(row, x_.n, 0.0);
    std::fill_n(drifted_row, x_.n, Single());
    return 0.0;
  }
  const std::size_t fold = at(y_.fold[at(bin_y)]) * at(x_.n);
  Single* drift = work.row_drift.get();
  apply_transfer(x_.n, parts(spectrum.row(bin_y)), parts(&transfer.field[fold]), x_.number.data(),
                 parts(row), parts(drift));
  row_->fft(row, row);
  row_drift_->fft(drift, drift);
  correct_row(x_.n, parts(drift), x_.drift.data(), y_.number[at(bin_y)], parts(row),
              parts(drifted_row));
  return weighted_sum(x_.n, spectrum.power_row(bin_y), &transfer.flux[fold]);
}

// The group of columns from first on, transformed, corrected for the drift in y and placed at the
// samples of the pair.
void PlaneSums::transform_columns(int first, std::uint32_t pair, Workspace& work) {
  const std::uint32_t* which = which_.get() + first;
  const auto holds_pair = [&] {
    for (int j = 0; j < y_.n; ++j)
      for (int i = 0; i < kColumns; ++i)
        if (which[at(j) * at(row_step_) + at(i)] == pair) return true;
    return false;
  };
  if (!holds_pair()) return;
  columns_->fft(rows_.get() + first, work.columns.get());
  columns_drift_->fft(drifted_.get() + first, work.column_drift.get());
  place_where(y_.n, row_step_, parts(work.columns.get()), parts(work.column_drift.get()),
              y_.drift.data(), which, pair, parts(sums_.get() + first));
}
