// The frame that every component lies in: sizes and spacings, and its stretch of slices.
#pragma once

#include <cstddef>
#include <cstdint>

#include "system/system.h"

// Truncation to int as the processor does it: what does not fit, NaN included, gives INT_MIN.
int truncate_to_int(double value);

// Spacings in metres and sizes, with a 0 replaced by 1. The quotients dx / metres bring a spacing
// back to file units; they may differ from so->dx in the last bit, which decides a ceil when a
// thickness is an exact multiple of the spacing.
struct Frame {
  explicit Frame(const struct_sysOptions& so);

  double metres;  // per file unit
  double dx, dy, dz;
  int nx, ny, nz;

  // Rows step by ny, so only on a square grid do slices keep out of one another's way.
  [[nodiscard]] bool is_square() const { return nx == ny; }

  // Samples of a slice and voxels of the volume; none if a size is negative.
  [[nodiscard]] std::size_t plane() const;
  [[nodiscard]] std::size_t voxels() const;
};

// The slices of a component.
struct Slab {
  // Begins at so.izlast and takes ceil(thickness_in_slices) slices, or what is left.
  Slab(const struct_sysOptions& so, double thickness_in_slices);

  int start;
  int taken;  // negative for a negative thickness

  // Slices to visit: those of the slab, without any from which no voxel can lie in the volume.
  int first, end;

  [[nodiscard]] bool holds(int iz) const { return iz >= first && iz < end; }
};
