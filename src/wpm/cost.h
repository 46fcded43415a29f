// Which sum of a step is the cheaper one.
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

// Nanoseconds, measured; only their proportions matter.
inline bool transforms_are_cheaper(const StepWork& work) {
  constexpr double kDirectTerm = 22.0;        // a plane wave at a sample
  constexpr double kMode = 100.0;             // a plane wave at a pair
  constexpr double kTransformedSample = 1.0;  // a sample of one pair's sum, a level of transform
  const double direct = work.kept * (work.samples * kDirectTerm + work.pairs * kMode);
  const double transformed =
      work.transformed * work.samples * (1.0 + std::log2(work.samples)) * kTransformedSample +
      work.missing * work.samples / 4 * kMode;
  return transformed <= direct;
}

}  // namespace wpm
