// The distinct pairs of indices at the samples of a step.
#pragma once

#include <cstdint>
#include <vector>

#include "wpm/modes.h"

struct IndexPairs {
  std::vector<IndexPair> pairs;      // distinct to the bit, in order of first appearance
  std::vector<std::uint32_t> which;  // of each sample, its place in pairs
};

// Of the count samples from N_i and N_t on.
IndexPairs find_index_pairs(const cpx* N_i, const cpx* N_t, std::size_t count);
