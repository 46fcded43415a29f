// The frame that every rasteriser works in: a stretch of slices of the index volume.
#pragma once

#include <cstdint>

#include "system/system.h"

// Truncation to int as the processor does it: what does not fit, NaN included, gives INT_MIN.
int truncate_to_int(double value);

// Spacings in metres and sizes, with a 0 replaced by 1. The quotients dx / scale bring a spacing
// back to file units; they may differ from so->dx in the last bit, which decides a ceil when a
// thickness is an exact multiple of the spacing.
struct Frame {
  explicit Frame(const struct_sysOptions& so);

  double metres;  // per file unit
  double dx, dy, dz;
  int nx, ny, nz;
};

class Slab {
 public:
  // The slab begins at so.izlast and takes ceil(thickness_in_slices) slices, or what is left.
  Slab(cpx* N, const struct_sysOptions& so, double thickness_in_slices);

  // Slices to visit: those of the slab, without any from which no voxel can lie in the array.
  int first;
  int end;

  // Slices taken; negative for a negative thickness.
  int taken;

  // Writes a voxel; outside the array nothing is written. The row step is ny, not nx: the index
  // volume is defined so, and the rows of a non-square grid overlap or leave gaps.
  void paint(int ix, int iy, int iz, const cpx& material) const {
    const std::int64_t index = iz * slice_ + std::int64_t{iy} * row_ + ix;
    if (index >= 0 && index < count_) N_[index] = material;
  }

 private:
  cpx* N_;
  std::int64_t count_;
  std::int64_t slice_;
  std::int64_t row_;
};
