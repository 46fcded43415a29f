// The absorbing edge: light is taken away near the sides, so that it does not come back from the
// other side of the periodic domain.
#pragma once

#include <vector>

#include "wpm/slice.h"

// Amplitude that a wave loses per metre along z at a depth (0 at the inner border, width at the
// side) of an absorbing edge, in 1/m. wavelength: that of the medium, m.
//
// The rate rises as g(u) = (u / (1.3 - u))^2, u = depth / width: quadratic where light enters, so
// that little is thrown back, and ever steeper towards a pole behind the side, as the absorbing
// potential without transmission of D. E. Manolopoulos, J. Chem. Phys. 117, 9552 (2002). (Damping
// the field after each step is R. Kosloff's and D. Kosloff's, J. Comput. Phys. 63, 363, 1986.)
//
// Its strength is the integral A of the rate over the width. A ray at an angle theta to the axis
// crosses two edges, the domain being periodic, and keeps exp(-4 A / tan(theta)) of its power,
// whatever its wavelength; what is thrown back grows with A and falls with the width in
// wavelengths. The sum of both is least near A = 1.5 + width / (3 wavelength), kept within 2 and 5.
double edge_absorption(double depth, double width, double wavelength);

// Multiplies the field by exp(-(rate(x) + rate(y)) dz) for each step that led to a slice. Slice 0,
// which no step leads to, stays as it is, so what a length of the way takes does not depend on dz.
// The flux of a slice is what arrives there, before the edge takes its part: the steppers add it,
// and the next slice's flux is that of the field that is left.
class EdgeMask : public FieldMask {
 public:
  // width, wavelength of the medium in m. An axis of one sample has no edge. Ends the process if
  // the width is above half the domain.
  EdgeMask(const Grid& grid, double width, double wavelength);
  // For slices of the rows of a window alone; apply is then for all ranks to call.
  EdgeMask(const Grid& grid, const Window& window, double width, double wavelength);

  void apply(int k, cpx* E) override;
  [[nodiscard]] bool covers(int k) const override { return k != 0; }

  // Power taken so far, the sum of |E|^2 dx dy before less that behind, over all slices and ranks.
  [[nodiscard]] double taken() const { return taken_; }
  // Goes on from a checkpoint.
  void set_taken(double taken) { taken_ = taken; }

  [[nodiscard]] Factors factors() const override { return {factor_x_, factor_y_}; }
  void add_taken(double sum) override { taken_ += sum * area_; }

 private:
  std::vector<double> factor_x_, factor_y_;  // of the amplitude, for one step
  double area_;                              // of a sample, m^2
  double taken_ = 0;
};
