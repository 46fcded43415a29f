// What a run will have to do, before it does it.
#pragma once

#include "system/index_stack.h"

struct IndexSurvey {
  int changes = 0;        // steps before or behind which the index changes along z
  double mean_pairs = 0;  // pairs of indices a step
  std::size_t most_pairs = 0;
};

// Paints slices and counts the distinct pairs of indices of the steps; where many slices change,
// of a hundred of them spread over the domain. Cost: a slice painted for each change looked at.
IndexSurvey survey(const IndexStack& stack);

// Seconds that the steps will take, from measured costs of a plane wave at a sample and of a
// transform; only the order of magnitude is meant. The direct sum's is a bound: every plane wave
// kept.
double direct_seconds(const Grid& grid, int threads);
double fast_seconds(const Grid& grid, double pairs, int threads);
