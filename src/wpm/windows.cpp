// Between ranks a slice travels by columns: those of a rank are one piece.
#include "wpm/windows.h"

#include <algorithm>
#include <vector>

namespace wpm {
namespace {

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

template <typename T>
std::vector<T> plane(int rows, int columns) {
  return std::vector<T>(at(rows) * at(columns));
}

// In blocks of few enough lines for a cache whose ways are lines a power of two apart.
template <typename T, typename Put>
void turn_with(const T* from, int rows, int columns, T* to, Put put) {
  constexpr int kBlock = 8;
  for (int row = 0; row < rows; row += kBlock)
    for (int column = 0; column < columns; column += kBlock)
      for (int c = column; c < std::min(columns, column + kBlock); ++c)
        for (int r = row; r < std::min(rows, row + kBlock); ++r)
          put(to[at(c) * at(rows) + at(r)], from[at(r) * at(columns) + at(c)]);
}

}  // namespace

template <typename T>
void turn(const T* from, int rows, int columns, T* to) {
  turn_with(from, rows, columns, to, [](T& there, const T& value) { there = value; });
}
template <typename T>
void turn_and_add(const T* from, int rows, int columns, T* to) {
  turn_with(from, rows, columns, to, [](T& there, const T& value) { there += value; });
}

template <typename T>
void gather_rows(const Grid& grid, const T* window, int first, int end, T* whole) {
  const int columns = window_of_rank(grid).columns();
  const int rows = end - first;
  std::vector<T> mine = plane<T>(rows, columns);
  turn(window + at(first) * at(columns), rows, columns, mine.data());
  std::vector<T> all = plane<T>(ranks::is_first() ? rows : 0, grid.nx);
  ranks::gather_lines(mine.data(), all.data(), grid.nx, at(rows) * sizeof(T));
  if (ranks::is_first()) turn(all.data(), grid.nx, rows, whole);
}

template <typename T>
void scatter_slice(const Grid& grid, const T* whole, T* window) {
  std::vector<T> all = plane<T>(ranks::is_first() ? grid.ny : 0, grid.nx);
  if (ranks::is_first()) turn(whole, grid.ny, grid.nx, all.data());
  const int columns = window_of_rank(grid).columns();
  std::vector<T> mine = plane<T>(grid.ny, columns);
  ranks::scatter_lines(all.data(), mine.data(), grid.nx, at(grid.ny) * sizeof(T));
  turn(mine.data(), columns, grid.ny, window);
}

void gather_everywhere(const Grid& grid, const cpx* window, cpx* whole) {
  const int columns = window_of_rank(grid).columns();
  std::vector<cpx> mine = plane<cpx>(grid.ny, columns);
  turn(window, grid.ny, columns, mine.data());
  std::vector<cpx> all = plane<cpx>(grid.ny, grid.nx);
  ranks::gather_lines_everywhere(mine.data(), all.data(), grid.nx, at(grid.ny) * sizeof(cpx));
  turn(all.data(), grid.nx, grid.ny, whole);
}

template void turn(const cpx*, int, int, cpx*);
template void turn(const double*, int, int, double*);
template void turn_and_add(const cpx*, int, int, cpx*);
template void turn_and_add(const double*, int, int, double*);
template void gather_rows(const Grid&, const cpx*, int, int, cpx*);
template void gather_rows(const Grid&, const double*, int, int, double*);
template void scatter_slice(const Grid&, const cpx*, cpx*);
template void scatter_slice(const Grid&, const double*, double*);

}  // namespace wpm
