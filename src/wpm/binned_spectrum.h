// The plane waves of a slice by transform bins.
#pragma once

#include "wpm/axis.h"
#include "wpm/batches.h"
#include "wpm/spectrum.h"

namespace wpm {

// Amplitudes as the inverse transform takes them, weak plane waves dropped, [x.n bins][y.n bins]:
// columns of the plane lie in one piece. Even square slices are transformed here, eight rows and
// then eight columns at a time, by all threads; others, whose transform reads a sheared slice or
// whose bins are not the frequencies' order, by Spectrum.
class BinnedSpectrum {
 public:
  BinnedSpectrum(const Axis& x, const Axis& y, std::vector<Workspace>& workspaces);

  // From the slice E, [y.n][x.n].
  void take(cpx* E);

  [[nodiscard]] std::size_t kept() const { return kept_; }  // plane waves
  [[nodiscard]] bool is_tame() const { return is_tame_; }   // finite and far from overflow
  [[nodiscard]] const cpx* column(int bin_x) const;
  [[nodiscard]] bool is_empty(int bin_x) const { return kept_in_[at(bin_x)] == 0; }
  // The sum of |amplitude|^2 over both signs of kx and ky, [fold of ky], for a fold of kx. Found
  // when it is first asked for; several threads may ask for different folds.
  [[nodiscard]] const double* power(int fold_x) const;

 private:
  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  cpx* column(int bin_x);
  void transform_rows(int group, cpx* E, Workspace& work);
  void transform_columns(int group, Workspace& work);
  void bin(int bin_x, const cpx* S);
  void find_power(int fold_x, double* power) const;

  const Axis& x_;
  const Axis& y_;
  std::vector<Workspace>& workspaces_;
  AlignedArray<cpx> f_;
  AlignedArray<double> power_;
  std::vector<std::size_t> kept_in_;  // [x.n]
  std::vector<char> is_tame_in_;
  mutable std::vector<char> has_power_;  // [fold of kx]
  std::size_t kept_ = 0;
  bool is_tame_ = true;

  std::unique_ptr<Spectrum> whole_;
  AlignedArray<double> power_of_bin_;  // several plane waves may share a bin
  // or:
  TurningPlane plane_;
  std::unique_ptr<fftwpp::fft1d_many> rows_, columns_;
};

}  // namespace wpm
