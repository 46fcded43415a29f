#include "system/slab.h"

#include <algorithm>
#include <climits>
#include <cmath>

int truncate_to_int(double value) {
  const bool fits =
      value > static_cast<double>(INT_MIN) - 1.0 && value < -static_cast<double>(INT_MIN);
  return fits ? static_cast<int>(value) : INT_MIN;
}

Frame::Frame(const struct_sysOptions& so)
    : metres(so.f),
      dx(so.dx == 0 ? 1.0 : so.dx * so.f),
      dy(so.dy == 0 ? 1.0 : so.dy * so.f),
      dz(so.dz == 0 ? 1.0 : so.dz * so.f),
      nx(so.nx == 0 ? 1 : so.nx),
      ny(so.ny == 0 ? 1 : so.ny),
      nz(so.nz == 0 ? 1 : so.nz) {}

std::size_t Frame::plane() const {
  return static_cast<std::size_t>(std::max(nx, 0)) * static_cast<std::size_t>(std::max(ny, 0));
}

std::size_t Frame::voxels() const {
  return plane() * static_cast<std::size_t>(std::max(nz, 0));
}

Slab::Slab(const struct_sysOptions& so, double thickness_in_slices) : start(so.izlast) {
  const Frame frame(so);
  const std::int64_t begin = start;
  const std::int64_t wanted = truncate_to_int(std::ceil(thickness_in_slices));
  const std::int64_t cut = std::min(wanted, frame.nz - begin);
  // Negative thicknesses move the cursor before the volume; the clamp keeps it an int.
  taken = static_cast<int>(
      std::clamp<std::int64_t>(cut, INT_MIN - std::min<std::int64_t>(begin, 0), INT_MAX));

  // With ny > nx the last rows of a slice extend into later slices. A few slices before the volume
  // therefore reach it.
  const std::int64_t overrun = frame.ny / frame.nx + 1;
  first = static_cast<int>(std::max(begin, -overrun));
  end = static_cast<int>(std::max<std::int64_t>(begin + taken, INT_MIN));
}
