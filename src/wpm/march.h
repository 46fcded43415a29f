// The one loop over slices, outside of the reference propagators.
#pragma once

#include <span>

#include "wpm/sink.h"
#include "wpm/slice.h"
#include "wpm/stepper.h"

// Called after each slice: checkpoints and progress.
class SliceObserver {
 public:
  virtual ~SliceObserver() = default;
  // Whether slice_done reads all of E of slice k; else there is what sinks required. Called just
  // before it.
  virtual bool requires_field(int /*k*/) { return false; }
  // Slice k is made and the sinks have it. step: the one that made it.
  virtual void slice_done(int k, const Slice& slice, const StepResult& step) = 0;
};

// What a propagation took.
struct PropagationTotals {
  double painting = 0, steps = 0, files = 0;                    // s; the run record shows steps
  int direct = 0, transforms = 0, interpolated = 0, known = 0;  // steps by how they summed
  double error = 0;                                             // the largest of the steps
};

constexpr int kFromTheEntry = -1;

// Takes slice 0, or continues after slice `after`, which the sinks have, and makes all others: each
// is stepped to, masked and handed to the sinks, then the observers are called. With an
// asynchronous stepper a slice is handed over and the next but one is painted during the next step.
// Sinks are finished at the end. Adds to totals, which are up to date when an observer is called.
void propagate(const Grid& grid, Slices& slices, Stepper& stepper,
               std::span<FieldMask* const> masks, std::span<Sink* const> sinks,
               std::span<SliceObserver* const> observers, int after, PropagationTotals& totals);
