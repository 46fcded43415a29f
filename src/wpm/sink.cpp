#include "wpm/sink.h"

#include <algorithm>

SliceRequest required_by(std::span<Sink* const> sinks, int k, const Grid& grid) {
  SliceRequest all;
  all.first_row = grid.ny, all.end_row = 0;
  all.first_column = grid.nx, all.end_column = 0;
  for (const Sink* sink : sinks) {
    const SliceRequest one = sink->required(k);
    all.E |= one.E;
    all.F |= one.F;
    all.N |= one.N;
    all.flux |= one.flux;
    if (!one.E && !one.F && !one.N) continue;
    all.first_row = std::min(all.first_row, one.first_row);
    all.end_row = std::max(all.end_row, std::min(one.end_row, grid.ny));
    all.first_column = std::min(all.first_column, one.first_column);
    all.end_column = std::max(all.end_column, std::min(one.end_column, grid.nx));
  }
  return all;
}
