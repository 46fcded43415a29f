// What a step costs by either sum, and which of them is the cheaper one.
#pragma once

#include <cmath>
#include <cstddef>

namespace wpm {

// What there is to do in a step.
struct StepWork {
  double samples;      // of a slice
  double kept;         // plane waves that are not weak
  double pairs;        // of indices
  double transformed;  // pairs, or functions that stand for them, with a transform each
  double missing;      // transfer functions that are not known yet
};

// Nanoseconds of one thread, measured.
constexpr double kModeCost = 100.0;  // a plane wave at a pair

inline double cost_by_transforms(const StepWork& work) {
  constexpr double kTransformedSample = 1.0;  // a sample of one pair's sum, a level of transform
  return work.transformed * work.samples * (1.0 + std::log2(work.samples)) * kTransformedSample +
         work.missing * work.samples / 4 * kModeCost;
}

inline double cost_of_direct_sum(const StepWork& work) {
  constexpr double kDirectTerm = 22.0;  // a plane wave at a sample
  return work.kept * (work.samples * kDirectTerm + work.pairs * kModeCost);
}

inline bool transforms_are_cheaper(const StepWork& work) {
  return cost_by_transforms(work) <= cost_of_direct_sum(work);
}

}  // namespace wpm
