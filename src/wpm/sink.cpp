#include "wpm/sink.h"

#include <algorithm>

SliceParts looked_at(std::span<Sink* const> sinks, int k, const Grid& grid) {
  SliceParts all;
  all.first_row = grid.ny, all.end_row = 0;
  all.first_column = grid.nx, all.end_column = 0;
  for (const Sink* sink : sinks) {
    const SliceParts parts = sink->looks_at(k);
    all.E |= parts.E;
    all.F |= parts.F;
    all.N |= parts.N;
    all.flux |= parts.flux;
    all.health |= parts.health;
    if (!parts.E && !parts.F && !parts.N) continue;
    all.first_row = std::min(all.first_row, parts.first_row);
    all.end_row = std::max(all.end_row, std::min(parts.end_row, grid.ny));
    all.first_column = std::min(all.first_column, parts.first_column);
    all.end_column = std::max(all.end_column, std::min(parts.end_column, grid.nx));
  }
  return all;
}
