#include "wpm/march.h"

#include <algorithm>
#include <chrono>

namespace {

// Adds the seconds of what it runs to a sum.
template <typename Work>
void timed(double& seconds, Work work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace

void march(const Grid& grid, Slices& slices, Stepper& stepper, std::span<FieldMask* const> masks,
           std::span<Sink* const> sinks, std::span<SliceWatcher* const> watchers, int behind,
           MarchTimes& times) {
  if (grid.nz < 1) return;
  const auto hand_over = [&](int k, const Slice& slice) {
    timed(times.files, [&] {
      for (Sink* sink : sinks) sink->take(k, slice);
    });
    for (SliceWatcher* watcher : watchers) watcher->slice_done(k, slice);
  };
  const int first = std::max(behind, 0);
  Slice here{};
  timed(times.painting, [&] { here = slices.at(first); });
  if (behind == kFromTheEntry) {
    for (FieldMask* mask : masks) mask->apply(0, here.E);
    hand_over(0, here);
  }
  for (int k = first; k < grid.nz - 1; ++k) {
    Slice next{};
    timed(times.painting, [&] { next = slices.at(k + 1); });
    timed(times.steps, [&] {
      stepper.step(here, next);
      for (FieldMask* mask : masks) mask->apply(k + 1, next.E);
    });
    hand_over(k + 1, next);
    here = next;
  }
  timed(times.files, [&] {
    for (Sink* sink : sinks) sink->finish();
  });
}
