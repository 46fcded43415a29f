// A spectrum as what it holds at each transverse wavenumber, whatever the direction.
#pragma once

#include <vector>

#include "wpm/binned_spectrum.h"
#include "wpm/transfer.h"

namespace wpm {

// Shells of equal width in kx^2 + ky^2 out to the corner of the spectrum.
class Shells {
 public:
  static constexpr int kCount = 512;

  explicit Shells(const FoldedFrequencies& folds);
  void take(const BinnedSpectrum& spectrum, const Axis& x, const Axis& y);

  // kx^2 + ky^2 at the inner end of a shell; kCount for the outer end of the last.
  [[nodiscard]] double kxy_sq(int shell) const { return width_ * shell; }
  [[nodiscard]] double power(int shell) const { return power_[at(shell)]; }  // sum of |f|^2
  [[nodiscard]] double total_power() const;

 private:
  static std::size_t at(int shell) { return static_cast<std::size_t>(shell); }
  std::vector<std::vector<std::uint16_t>> shell_of_;  // [fold of kx][fold of ky]
  double width_ = 0;
  std::vector<double> power_;
};

}  // namespace wpm
