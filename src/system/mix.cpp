#include "system/mix.h"

#include <algorithm>
#include <cmath>

int levels_of(const struct_layer& l, int otherwise) {
  return l.levels == 0 ? otherwise : l.levels;
}

int nearest_level(double share, int levels) {
  return static_cast<int>(std::clamp(std::lround(share * levels), 0L, long{levels}));
}

Mix::Mix(const cpx& inside, const cpx& outside, int levels, bool is_over)
    : levels_(std::max(levels, 1)), is_over_(is_over), inside_(inside) {
  for (int step = 0; step < levels_; ++step)
    means_.push_back(outside + (inside - outside) * (static_cast<double>(step) / levels_));
  means_.push_back(inside);  // bit-identical
}

void Mix::lay(cpx& voxel, double share) const {
  const int step = nearest_level(share, levels_);
  if (!is_over_)
    voxel = means_[static_cast<std::size_t>(step)];
  else if (step == levels_)
    voxel = inside_;
  else if (step > 0)
    voxel += (inside_ - voxel) * (static_cast<double>(step) / levels_);
}
