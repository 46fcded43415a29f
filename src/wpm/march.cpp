#include "wpm/march.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace {

// Adds the seconds of what it runs to a sum.
template <typename Work>
void timed(double& seconds, Work work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

class March {
 public:
  March(const Grid& grid, Slices& slices, Stepper& stepper, std::span<FieldMask* const> masks,
        std::span<Sink* const> sinks, std::span<SliceWatcher* const> watchers, MarchTimes& times)
      : grid_(grid),
        slices_(slices),
        stepper_(stepper),
        masks_(masks),
        sinks_(sinks),
        watchers_(watchers),
        times_(times) {
    for (FieldMask* mask : masks)
      if (!stepper.adopt(*mask)) laid_here_.push_back(mask);
  }

  void run(int behind);

 private:
  [[nodiscard]] Slice paint(int k);
  [[nodiscard]] StepOrder order_of(int k) const;
  [[nodiscard]] bool is_masked_there(int k) const;
  void mask(int k, Slice& slice);
  void hand_over(int k, const Slice& slice);

  const Grid& grid_;
  Slices& slices_;
  Stepper& stepper_;
  std::span<FieldMask* const> masks_;
  std::span<Sink* const> sinks_;
  std::span<SliceWatcher* const> watchers_;
  MarchTimes& times_;
  std::vector<FieldMask*> laid_here_;  // masks that the stepper leaves to us
  int taken_ = kFromTheEntry;          // the last slice that the sinks have
};

Slice March::paint(int k) {
  Slice slice{};
  if (k < grid_.nz) timed(times_.painting, [&] { slice = slices_.at(k); });
  return slice;
}

// Masks follow one another, so that one that is laid here brings all of its slice here.
bool March::is_masked_there(int k) const {
  return std::none_of(laid_here_.begin(), laid_here_.end(),
                      [k](const FieldMask* mask) { return mask->covers(k); });
}

StepOrder March::order_of(int k) const {
  StepOrder order = {looked_at(sinks_, k, grid_), is_masked_there(k)};
  SliceParts& parts = order.parts;
  parts.health = true;
  if (order.is_masked && !slices_.are_kept()) return order;
  parts.E = true;
  parts.F |= slices_.are_kept();
  parts.first_row = parts.first_column = 0;
  parts.end_row = grid_.ny, parts.end_column = grid_.nx;
  return order;
}

void March::mask(int k, Slice& slice) {
  for (FieldMask* mask : masks_) {
    if (!mask->covers(k)) continue;
    mask->apply(k, slice.E);
    slice.is_as_made = false;
    slice.health.reset();
  }
}

void March::hand_over(int k, const Slice& slice) {
  if (k == taken_) return;
  timed(times_.files, [&] {
    for (Sink* sink : sinks_) sink->take(k, slice);
  });
  taken_ = k;
  for (SliceWatcher* watcher : watchers_) {
    if (watcher->wants_field(k)) stepper_.bring_field(slice);
    watcher->slice_done(k, slice);
  }
}

void March::run(int behind) {
  taken_ = behind;
  const bool is_elsewhere = stepper_.is_elsewhere();
  const int first = std::max(behind, 0);
  Slice here = paint(first);
  if (behind == kFromTheEntry) mask(0, here);
  if (!is_elsewhere) hand_over(first, here);
  Slice next = paint(first + 1);
  for (int k = first; k < grid_.nz - 1; ++k) {
    const StepOrder order = order_of(k + 1);
    timed(times_.steps, [&] { stepper_.begin(here, next, order); });
    Slice after_next{};
    if (is_elsewhere) {
      hand_over(k, here);
      after_next = paint(k + 2);
      if (k + 2 < grid_.nz) timed(times_.painting, [&] { stepper_.look_ahead(next, after_next); });
    }
    timed(times_.steps, [&] {
      stepper_.finish(next);
      if (!order.is_masked) mask(k + 1, next);
    });
    times_.steps += stepper_.seconds_between();
    if (!is_elsewhere) {
      hand_over(k + 1, next);
      after_next = paint(k + 2);
    }
    here = next;
    next = after_next;
  }
  hand_over(grid_.nz - 1, here);
  timed(times_.files, [&] {
    for (Sink* sink : sinks_) sink->finish();
  });
}

}  // namespace

void march(const Grid& grid, Slices& slices, Stepper& stepper, std::span<FieldMask* const> masks,
           std::span<Sink* const> sinks, std::span<SliceWatcher* const> watchers, int behind,
           MarchTimes& times) {
  if (grid.nz < 1) return;
  March(grid, slices, stepper, masks, sinks, watchers, times).run(behind);
}
