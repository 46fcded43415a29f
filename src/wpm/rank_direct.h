// The direct sum where each rank has a range of columns.
#pragma once

#include <memory>

#include "wpm/axes.h"
#include "wpm/index_pairs.h"
#include "wpm/slice.h"
#include "wpm/spectrum.h"
#include "wpm/superposition.h"

namespace wpm {

// Every rank has the whole slice for its spectrum, and sums all plane waves at its own samples.
// Memory: two slices and the plane waves on each rank.
class RankDirectSum {
 public:
  // Plans; by plan_alike with the wisdom of the first rank, and then has the bits of one process.
  RankDirectSum(const Grid& grid, const StepOptions& options);

  // The slices are the ranks' windows. pairs: of all ranks, where the caller knows them; a spectrum
  // that is NaN as a whole then needs a few plane waves only. Returns whether it was.
  bool sum(const Slice& from, const Slice& to, const std::vector<IndexPair>* pairs);

 private:
  Grid grid_;
  Window window_;
  StepOptions options_;
  Axes axes_;
  Spectrum spectrum_;
};

}  // namespace wpm
