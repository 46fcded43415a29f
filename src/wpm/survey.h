// What a run will have to do, before it does it.
#pragma once

#include "system/index_stack.h"

struct IndexSurvey {
  int changes = 0;        // steps before or behind which the index changes along z
  double mean_pairs = 0;  // pairs of indices a step
  std::size_t most_pairs = 0;

  // By the cost that the fast stepper decides by, added up over the steps.
  double direct_seconds = 0;     // of one thread, by the direct sum
  double fast_seconds = 0;       // of one thread, each step by the cheaper sum
  double transformed_steps = 0;  // those that go by transforms then
  double transfers = 0;          // transfer functions that they make
  double most_waves = 0;         // plane waves of a step
};

// Paints slices and counts the distinct pairs of indices of the steps; where many slices change,
// of a hundred of them spread over the domain. entry_waves: the plane waves of slice 0. A step of
// several pairs is taken to scatter into every plane wave. Cost: a slice painted for each change
// looked at.
IndexSurvey survey(const IndexStack& stack, double entry_waves);

// The plane waves of a slice, [ny][nx], that a step keeps. Plans without measuring: no wisdom.
std::size_t count_plane_waves(const cpx* E, const Grid& grid);

// Seconds of one thread for all steps by the direct sum, every plane wave kept.
double most_direct_seconds(const Grid& grid);
