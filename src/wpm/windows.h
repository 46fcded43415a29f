// The part of a slice that a rank holds, and the whole.
#pragma once

#include "ranks/ranks.h"
#include "system/grid.h"

namespace wpm {

// The columns of a slice that a rank owns, as a window of all slices.
inline Window window_of_rank(const Grid& grid) {
  const ranks::Share mine = ranks::share(grid.nx);
  return {mine.begin, mine.end, 0, grid.nz};
}

inline std::size_t samples_of(const Grid& grid, const Window& window) {
  return static_cast<std::size_t>(window.columns()) *
         static_cast<std::size_t>(grid.ny > 0 ? grid.ny : 0);
}

// to[column][row] = from[row][column]; or added to what is there.
template <typename T>
void turn(const T* from, int rows, int columns, T* to);
template <typename T>
void turn_and_add(const T* from, int rows, int columns, T* to);

// Rows first to end - 1 of the windows of all ranks, [ny][columns] each, brought together in whole,
// [end - first][nx], on the first rank; whole is null on the others. For all ranks to call.
template <typename T>
void gather_rows(const Grid& grid, const T* window, int first, int end, T* whole);

// A slice, [ny][nx], of the first rank's into the windows of all.
template <typename T>
void scatter_slice(const Grid& grid, const T* whole, T* window);

// All windows in whole, [ny][nx], on every rank.
void gather_everywhere(const Grid& grid, const cpx* window, cpx* whole);

}  // namespace wpm
