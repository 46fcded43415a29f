// Sums over all plane waves at all samples of a plane, by transforms.
#pragma once

#include <cstdint>
#include <memory>

#include "many1d.h"
#include "wpm/axis.h"
#include "wpm/transfer.h"

// Storage aligned for the transforms.
template <typename T>
struct AlignedDelete {
  void operator()(T* memory) const { fftw_free(memory); }
};
template <typename T>
using AlignedArray = std::unique_ptr<T[], AlignedDelete<T>>;

// The spectrum of a slice by transform bins, weak plane waves dropped.
class BinnedSpectrum {
 public:
  BinnedSpectrum(const Axis& x, const Axis& y);

  // From S, the raw transform of a slice, [y.n][x.n] in transform order.
  void take(const cpx* S);

  [[nodiscard]] std::size_t kept() const { return kept_; }  // plane waves
  [[nodiscard]] bool is_tame() const { return is_tame_; }   // finite and far from overflow
  [[nodiscard]] const cpx* row(int bin_y) const;            // amplitudes
  [[nodiscard]] const double* power_row(int bin_y) const;   // |amplitude|^2
  [[nodiscard]] bool is_empty_row(int bin_y) const;

 private:
  const Axis& x_;
  const Axis& y_;
  std::vector<cpx> f_;
  std::vector<double> power_;
  std::vector<char> is_empty_row_;
  std::size_t kept_ = 0;
  bool is_tame_ = true;
};

// Inverse transforms of a spectrum times a transfer function, corrected to first order for the
// drift of the axes: rows first, each with the drift in x, then columns with the drift in y. The
// corrections are below 1e-6 of the sum, so single precision keeps them to 1e-13.
class PlaneSums {
 public:
  PlaneSums(const Axis& x, const Axis& y);

  // Adds the sum to every sample of E, [y.n][x.n], whose entry in which is pair, and returns the
  // flux of each such sample. Columns without one are not worked out.
  double add(const BinnedSpectrum& spectrum, const Transfer& transfer, const std::uint32_t* which,
             std::uint32_t pair, cpx* E);

 private:
  static constexpr int kColumns = 8;  // columns transformed together

  double transform_rows(const BinnedSpectrum& spectrum, const Transfer& transfer);
  void transform_columns(const std::uint32_t* which, std::uint32_t pair, cpx* E) const;

  const Axis& x_;
  const Axis& y_;
  int row_step_;            // of the planes below: whole groups of columns, and no power of two
  AlignedArray<cpx> rows_;  // [y bins][row_step_], then by sample in x
  AlignedArray<std::complex<float>> drifted_;  // the same times the bin's frequency number
  std::unique_ptr<fftwpp::fft1d_many> row_, columns_;
  std::unique_ptr<fftwpp::fft1f_many> row_drift_, columns_drift_;
};
