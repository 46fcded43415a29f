// The part of a grid that a monitor covers.
#pragma once

#include <string>

#include "system/grid.h"
#include "system/monitor.h"

// A range of samples along one axis.
struct SampleRange {
  int first = 0, count = 0;
};

// The samples nearest to the bounds of a monitor, both included, and every so many of its slices.
struct Box {
  SampleRange x, y, z;
  int every = 1;

  [[nodiscard]] bool has_slice(int k) const {
    return k >= z.first && k < z.first + z.count && (k - z.first) % every == 0;
  }
  [[nodiscard]] int saved_slices() const { return (z.count + every - 1) / every; }
  [[nodiscard]] std::size_t samples() const {  // of a slice
    return static_cast<std::size_t>(x.count) * static_cast<std::size_t>(y.count);
  }
};

// where: "FILE: line N", for the error that ends the process if a bound lies outside of the domain.
Box box_of(const Monitor& monitor, const Grid& grid, const std::string& where);

// The sample nearest to a length in the file's unit; the edges of the domain belong to it.
int nearest_x(const Grid& grid, double x, const std::string& where);
int nearest_y(const Grid& grid, double y, const std::string& where);
