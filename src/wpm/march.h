// The one loop over slices, outside of the prescribed propagators.
#pragma once

#include <span>

#include "wpm/sink.h"
#include "wpm/slice.h"

// What is told after each slice; checkpoints and progress.
class SliceWatcher {
 public:
  virtual ~SliceWatcher() = default;
  // Slice k is made and the sinks have it. Of E there are the parts that sinks look at, and all of
  // it where the watcher wants it.
  virtual void slice_done(int k, const Slice& slice) = 0;
  // Asked just before that.
  virtual bool wants_field(int /*k*/) { return false; }
};

// Seconds that a march spent.
struct MarchTimes {
  double painting = 0;
  double steps = 0;  // what the run record shows
  double files = 0;
};

constexpr int kFromTheEntry = -1;

// Takes slice 0, or goes on behind slice `behind`, which the sinks have, and makes all others: each
// is stepped to, masked, handed to the sinks, and then the watchers are told. Where steps are made
// elsewhere, a slice is handed over and the next but one is painted while the next is made. Sinks
// are finished at the end. Adds to times, which is up to date whenever a watcher is told.
void march(const Grid& grid, Slices& slices, Stepper& stepper, std::span<FieldMask* const> masks,
           std::span<Sink* const> sinks, std::span<SliceWatcher* const> watchers, int behind,
           MarchTimes& times);
