// The axes of a grid.
#pragma once

#include <vector>

#include "system/grid.h"

namespace wpm {

// What init_X and init_F make of a grid. On odd sizes the last frequency is 0.
struct Axes {
  Axes() = default;
  explicit Axes(const Grid& grid);

  std::vector<cpx> KX, KY;   // [nx], [ny] rad/m, transform order
  std::vector<double> X, Y;  // [nx], [ny] m, centred
};

}  // namespace wpm
