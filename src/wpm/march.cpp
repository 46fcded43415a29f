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
  int last_taken = behind;
  const auto hand_over = [&](int k, const Slice& slice) {
    if (k == last_taken) return;
    timed(times.files, [&] {
      for (Sink* sink : sinks) sink->take(k, slice);
    });
    last_taken = k;
    for (SliceWatcher* watcher : watchers) {
      if (watcher->wants_field(k)) stepper.bring_field(slice);
      watcher->slice_done(k, slice);
    }
  };
  const auto paint = [&](int k) {
    Slice slice{};
    if (k < grid.nz) timed(times.painting, [&] { slice = slices.at(k); });
    return slice;
  };
  const auto cover = [&](int k, Slice& slice) {
    for (FieldMask* mask : masks) {
      if (!mask->covers(k)) continue;
      mask->apply(k, slice.E);
      slice.is_as_made = false;
      slice.health.reset();
    }
  };
  const auto needed = [&](int k) {
    SliceParts parts = looked_at(sinks, k, grid);
    const bool is_covered =
        std::any_of(masks.begin(), masks.end(), [k](FieldMask* mask) { return mask->covers(k); });
    if (is_covered || slices.are_kept()) {
      parts.E = true;
      parts.F |= slices.are_kept();
      parts.first_row = parts.first_column = 0;
      parts.end_row = grid.ny, parts.end_column = grid.nx;
    }
    parts.health = true;
    return parts;
  };

  const bool is_elsewhere = stepper.is_elsewhere();
  const int first = std::max(behind, 0);
  Slice here = paint(first);
  if (behind == kFromTheEntry) cover(0, here);
  if (!is_elsewhere) hand_over(first, here);
  Slice next = paint(first + 1);
  for (int k = first; k < grid.nz - 1; ++k) {
    timed(times.steps, [&] { stepper.begin(here, next, needed(k + 1)); });
    Slice after_next{};
    if (is_elsewhere) {
      hand_over(k, here);
      after_next = paint(k + 2);
    }
    timed(times.steps, [&] {
      stepper.finish(next);
      cover(k + 1, next);
    });
    times.steps += stepper.seconds_between();
    if (!is_elsewhere) {
      hand_over(k + 1, next);
      after_next = paint(k + 2);
    }
    here = next;
    next = after_next;
  }
  hand_over(grid.nz - 1, here);
  timed(times.files, [&] {
    for (Sink* sink : sinks) sink->finish();
  });
}
