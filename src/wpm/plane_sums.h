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
  // Adds row q of the raw transform to its bins; returns how many plane waves it keeps.
  std::size_t add_row(const cpx* s, int q, bool& is_tame);

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

  // Begins a slice: which, [y.n][x.n], is the pair of each sample.
  void begin(const std::uint32_t* which);

  // Works out the sum at every sample of the pair and returns the flux of each. Groups of columns
  // without such a sample are left out.
  double add(const BinnedSpectrum& spectrum, const Transfer& transfer, std::uint32_t pair);

  // Adds all sums to E, [y.n][x.n], once every pair has had its turn.
  void finish(cpx* E) const;

 private:
  // What a thread works in.
  struct Workspace {
    AlignedArray<std::complex<float>> row_drift;     // [x.n]
    AlignedArray<cpx> columns;                       // [y.n][8]
    AlignedArray<std::complex<float>> column_drift;  // [y.n][8]
  };

  double transform_row(int bin_y, const BinnedSpectrum& spectrum, const Transfer& transfer,
                       Workspace& work);
  void transform_columns(int first, std::uint32_t pair, Workspace& work);

  const Axis& x_;
  const Axis& y_;
  int row_step_;            // of the planes below: whole groups of columns, and no power of two
  AlignedArray<cpx> rows_;  // [y bins][row_step_], then by sample in x
  AlignedArray<std::complex<float>> drifted_;  // the same times the bin's frequency number
  AlignedArray<cpx> sums_;                     // [y.n][row_step_], each sample's own
  AlignedArray<std::uint32_t> which_;          // [y.n][row_step_]
  std::vector<Workspace> workspaces_;          // one a thread
  std::vector<double> row_flux_;
  std::unique_ptr<fftwpp::fft1d_many> row_, columns_;
  std::unique_ptr<fftwpp::fft1f_many> row_drift_, columns_drift_;
};
