// What a voxel holds that a face cuts.
#pragma once

#include <vector>

#include "system/system.h"

// The levels of a layer, or otherwise if it gives none.
int levels_of(const struct_layer& l, int otherwise);

// The nearest of the levels 0, 1, ..., levels to a share from 0 to 1.
int nearest_level(double share, int levels);

// The index of a voxel of which a share is the first material: the mean, extinction included, in
// so many steps. Means of the index and not of its square: the phase that light collects on its way
// along z is the sum of index times length, so on average over the face it is that of the true
// body. (Across a face the square would be the better mean for one polarization, a mean of its
// inverse for the other; the difference is of second order in the index step.)
class Mix {
 public:
  // is_over: the second material is what the voxel holds already.
  Mix(const cpx& inside, const cpx& outside, int levels, bool is_over);

  [[nodiscard]] int levels() const { return levels_; }
  void lay(cpx& voxel, double share) const;

 private:
  int levels_;
  bool is_over_;
  cpx inside_;
  std::vector<cpx> means_;  // of each step, 0 to levels
};
