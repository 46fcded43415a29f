#include "wpm/axes.h"

#include "constants.h"
#include "wpm/wpm.h"

namespace wpm {
namespace {

std::size_t count(int n) {
  return static_cast<std::size_t>(n > 0 ? n : 0);
}

}  // namespace

Axes::Axes(const Grid& grid)
    : KX(count(grid.nx)), KY(count(grid.ny)), X(count(grid.nx)), Y(count(grid.ny)) {
  init_X(X.data(), grid.nx, grid.dx);
  init_X(Y.data(), grid.ny, grid.dy);
  init_F(KX.data(), grid.nx, kTwoPi / grid.ax());
  init_F(KY.data(), grid.ny, kTwoPi / grid.ay());
}

}  // namespace wpm
