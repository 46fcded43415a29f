// The grid of a run, and parts of it.
#pragma once

#include <algorithm>
#include <cstddef>

#include "system/system.h"

// Sizes and spacings, made once and passed to every loop. Sizes are those of the file, 0 included.
struct Grid {
  int nx = 0, ny = 0, nz = 0;
  double dx = 0, dy = 0, dz = 0;  // m; bare products, 0 if the file gives no extent
  double metres = 1;              // per file unit

  Grid() = default;
  explicit Grid(const struct_sysOptions& so);

  [[nodiscard]] double ax() const { return nx * dx; }  // extents, m
  [[nodiscard]] double ay() const { return ny * dy; }
  [[nodiscard]] double az() const { return nz * dz; }

  // Samples of a slice; voxels of the volume, which may exceed an int.
  [[nodiscard]] std::size_t plane() const;
  [[nodiscard]] std::size_t voxels() const;

  [[nodiscard]] bool is_square() const { return nx == ny; }

  // The position of a sample, m: 0 at sample n/2; z from the entry.
  [[nodiscard]] double x(int i) const {
    const int middle = nx / 2;
    return (i - middle) * dx;
  }
  [[nodiscard]] double y(int j) const {
    const int middle = ny / 2;
    return (j - middle) * dy;
  }
  [[nodiscard]] double z(int k) const { return k * dz; }
};

// A range of rows and of slices of a grid: the part of a stream or a rank.
struct Window {
  int y_begin = 0, y_end = 0;
  int z_begin = 0, z_end = 0;

  static Window whole(const Grid& grid) { return {0, grid.ny, 0, grid.nz}; }
  static Window slice(const Grid& grid, int k) { return {0, grid.ny, k, k + 1}; }
  [[nodiscard]] int rows() const { return y_end - y_begin; }
  [[nodiscard]] int slices() const { return z_end - z_begin; }
};

// The number of samples in a window's rows of a slice.
inline std::size_t plane_of(const Grid& grid, const Window& window) {
  return static_cast<std::size_t>(std::max(grid.nx, 0)) *
         static_cast<std::size_t>(std::max(window.rows(), 0));
}
