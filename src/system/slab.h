// The frame of every component, sizes and spacings, and its range of slices.
#pragma once

#include <cstddef>
#include <cstdint>

#include "system/system.h"

// Truncates to int as the processor does: NaN and values that do not fit give INT_MIN.
int truncate_to_int(double value);

// Spacings in metres and sizes; a 0 is replaced by 1. dx / metres is the spacing in file units. It
// may differ from so->dx in the last bit. That bit decides a ceil if a thickness is an exact
// multiple of the spacing.
struct Frame {
  explicit Frame(const struct_sysOptions& so);

  double metres;  // per file unit
  double dx, dy, dz;
  int nx, ny, nz;

  // Rows step by ny, so slices are separate only on a square grid.
  [[nodiscard]] bool is_square() const { return nx == ny; }

  // Samples of a slice and voxels of the volume; none if a size is negative.
  [[nodiscard]] std::size_t plane() const;
  [[nodiscard]] std::size_t voxels() const;
};

// The slices of a component.
struct Slab {
  // Begins at so.izlast and takes ceil(thickness_in_slices) slices, or those that are left.
  Slab(const struct_sysOptions& so, double thickness_in_slices);

  int start;
  int taken;  // negative for a negative thickness

  // Slices to visit: those of the slab that can have a voxel in the volume.
  int first, end;

  [[nodiscard]] bool holds(int iz) const { return iz >= first && iz < end; }
};
