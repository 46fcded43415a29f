// The plane waves of a slice by transform bins.
#pragma once

#include "wpm/axis.h"
#include "wpm/batches.h"
#include "wpm/spectrum.h"

namespace wpm {

// Amplitudes as the inverse transform takes them, weak plane waves dropped, [own bins of
// x][bins of y]: a column of the plane is contiguous. A rank owns a range of the rows of a slice
// and of the bins of x. Even square slices are transformed here, eight rows and then eight columns
// at a time, by all threads; between rows and columns the ranks exchange them. Others, whose
// transform reads a sheared slice or whose bins are not the frequencies' order, are transformed by
// Spectrum.
class BinnedSpectrum {
 public:
  BinnedSpectrum(const Axis& x, const Axis& y, std::vector<Workspace>& workspaces);

  // From a slice, E [own rows][x.n]. For all ranks to call.
  void take(cpx* E);

  // Of all ranks:
  [[nodiscard]] std::size_t kept() const { return kept_; }  // plane waves
  [[nodiscard]] bool is_tame() const { return is_tame_; }   // finite and far from overflow

  // The rank's own bins of x, and their folds.
  [[nodiscard]] const ranks::Share& bins() const { return bins_; }
  [[nodiscard]] const ranks::Share& folds() const { return folds_; }
  [[nodiscard]] const cpx* column(int bin_x) const { return f_.get() + own(bin_x) * at(y_.n); }
  // Also of bins that are not the rank's own.
  [[nodiscard]] bool is_empty(int bin_x) const {
    return !bins_.holds(bin_x) || kept_in_[own(bin_x)] == 0;
  }
  // The sum of |amplitude|^2 over both signs of ky and the rank's own signs of kx, [fold of ky],
  // for a fold of kx. Found when it is first requested; several threads may request different
  // folds.
  [[nodiscard]] const double* power(int fold_x) const;

 private:
  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  [[nodiscard]] std::size_t own(int bin_x) const { return at(bin_x - bins_.begin); }
  void transform_rows(int group, cpx* E, Workspace& work);
  void transform_columns(int group, Workspace& work);
  void bin(int bin_x, const cpx* S);
  void find_power(int fold_x, double* power) const;

  const Axis& x_;
  const Axis& y_;
  std::vector<Workspace>& workspaces_;
  int rows_;  // the rank's own
  ranks::Share bins_, folds_;
  AlignedArray<cpx> f_;
  AlignedArray<double> power_;
  std::vector<std::size_t> kept_in_;  // [own bins of x]
  std::vector<char> is_tame_in_;
  mutable std::vector<char> has_power_;  // [own folds of kx]
  std::size_t kept_ = 0;
  bool is_tame_ = true;

  std::unique_ptr<Spectrum> whole_;
  AlignedArray<double> power_of_bin_;  // several plane waves may share a bin
  // or:
  TurningPlane plane_;
  std::unique_ptr<fftwpp::fft1d_many> rows_of_slice_, columns_;
};

}  // namespace wpm
