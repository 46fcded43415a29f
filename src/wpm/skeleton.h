// A few rows of a matrix that all others are combinations of.
#pragma once

#include <vector>

#include "system/system.h"

namespace wpm {

using Rows = std::vector<std::vector<cpx>>;

struct Skeleton {
  std::vector<std::size_t> chosen;        // rows
  std::vector<std::vector<cpx>> weights;  // [row][chosen]: row = sum of weights * chosen rows
};

// Chooses rows until what is left of any row is at most allowed long: Gram-Schmidt with pivoting,
// the largest remainder first (an interpolative decomposition). Cost
// rows * columns * chosen.
Skeleton skeleton_of(const Rows& rows, double allowed);

}  // namespace wpm
