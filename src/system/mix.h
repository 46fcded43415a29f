// The mean index of a voxel that contains a face.
#pragma once

#include <vector>

#include "system/system.h"

// The levels of a layer; `otherwise` if it gives none.
int levels_of(const struct_layer& l, int otherwise);

// The level 0, 1, ..., levels nearest to a share from 0 to 1.
int nearest_level(double share, int levels);

// The index of a voxel with a share of the first material: the mean, extinction included, in a
// number of steps. It is the mean of the index, not of its square: phase along z is the sum of
// index times length. Its average over the face is that of the true body. (Across a face the mean
// square suits one polarization, the mean of its inverse the other. The difference is of second
// order in the index step.)
class Mix {
 public:
  // is_over: the second material is the voxel's present value.
  Mix(const cpx& inside, const cpx& outside, int levels, bool is_over);

  [[nodiscard]] int levels() const { return levels_; }
  void lay(cpx& voxel, double share) const;

 private:
  int levels_;
  bool is_over_;
  cpx inside_;
  std::vector<cpx> means_;  // of each step, 0 to levels
};
