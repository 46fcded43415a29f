#include "system/grid.h"

#include <algorithm>

Grid::Grid(const struct_sysOptions& so)
    : nx(so.nx),
      ny(so.ny),
      nz(so.nz),
      dx(so.dx * so.f),
      dy(so.dy * so.f),
      dz(so.dz * so.f),
      metres(so.f) {}

std::size_t Grid::plane() const {
  return static_cast<std::size_t>(std::max(nx, 0)) * static_cast<std::size_t>(std::max(ny, 0));
}

std::size_t Grid::voxels() const {
  return plane() * static_cast<std::size_t>(std::max(nz, 0));
}
