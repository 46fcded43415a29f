#include "wpm/march.h"

#include <algorithm>
#include <chrono>
#include <numeric>

namespace {

// Adds the seconds of what it runs to a sum.
template <typename Work>
void timed(double& seconds, Work work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

class Propagation {
 public:
  Propagation(const Grid& grid, Slices& slices, Stepper& stepper, std::span<FieldMask* const> masks,
              std::span<Sink* const> sinks, std::span<SliceObserver* const> observers,
              PropagationTotals& totals)
      : grid_(grid),
        slices_(slices),
        stepper_(stepper),
        masks_(masks),
        sinks_(sinks),
        observers_(observers),
        totals_(totals) {}

  void run(int after);

 private:
  void paint(int k);
  [[nodiscard]] bool is_masked(int k) const;
  [[nodiscard]] FieldMask* mask_of_device(int k) const;
  [[nodiscard]] SliceRequest required(int k) const;
  void finish_step(int k, const SliceRequest& request);
  void mask(int k);
  void hand_over(int k);

  const Grid& grid_;
  Slices& slices_;
  Stepper& stepper_;
  std::span<FieldMask* const> masks_;
  std::span<Sink* const> sinks_;
  std::span<SliceObserver* const> observers_;
  PropagationTotals& totals_;
  StepResult made_;            // of the last step
  int taken_ = kFromTheEntry;  // the last slice that the sinks have
};

void Propagation::paint(int k) {
  if (k < grid_.nz) timed(totals_.painting, [&] { slices_.at(k); });
}

bool Propagation::is_masked(int k) const {
  return std::any_of(masks_.begin(), masks_.end(),
                     [k](const FieldMask* mask) { return mask->covers(k); });
}

// Masks follow one another, so a device applies one only if it is the only one.
FieldMask* Propagation::mask_of_device(int k) const {
  FieldMask* only = nullptr;
  for (FieldMask* mask : masks_) {
    if (!mask->covers(k)) continue;
    if (only != nullptr || mask->factors().columns.empty()) return nullptr;
    only = mask;
  }
  return slices_.is_async() ? only : nullptr;
}

SliceRequest Propagation::required(int k) const {
  SliceRequest request = required_by(sinks_, k, grid_);
  request.state = true;
  request.mask = mask_of_device(k);
  if (slices_.are_kept()) request.F = true;
  if (slices_.are_kept() || (is_masked(k) && request.mask == nullptr)) {
    request.E = true;
    request.first_row = request.first_column = 0;
    request.end_row = grid_.ny, request.end_column = grid_.nx;
  }
  return request;
}

void Propagation::finish_step(int k, const SliceRequest& request) {
  made_ = stepper_.wait();
  slices_.set_made(k, request.E && request.first_row == 0 && request.end_row >= grid_.ny &&
                          request.first_column == 0 && request.end_column >= grid_.nx);
  totals_.steps += made_.seconds;
  totals_.error = std::max(totals_.error, made_.error);
  ++(made_.sum == Sum::kDirect         ? totals_.direct
     : made_.sum == Sum::kTransforms   ? totals_.transforms
     : made_.sum == Sum::kInterpolated ? totals_.interpolated
                                       : totals_.known);
  if (request.mask != nullptr)
    mask_of_device(k)->add_taken(made_.taken);
  else
    timed(totals_.steps, [&] { mask(k); });
}

void Propagation::mask(int k) {
  for (FieldMask* mask : masks_) {
    if (!mask->covers(k)) continue;
    mask->apply(k, slices_.change_field(k));
    made_.state.reset();
  }
}

void Propagation::hand_over(int k) {
  if (k == taken_) return;
  taken_ = k;
  Slice slice = slices_.at(k);
  timed(totals_.files, [&] {
    if (required_by(sinks_, k, grid_).flux)
      slice.flux =
          made_.flux ? *made_.flux : std::accumulate(slice.F, slice.F + slices_.samples(), 0.0);
    for (Sink* sink : sinks_) sink->take(k, slice);
  });
  for (SliceObserver* observer : observers_) {
    if (observer->requires_field(k)) slices_.fetch_field(k);
    observer->slice_done(k, slice, made_);
  }
}

void Propagation::run(int after) {
  taken_ = after;
  const int first = std::max(after, 0);
  paint(first);
  if (after == kFromTheEntry) mask(0);
  if (!slices_.is_async()) hand_over(first);
  paint(first + 1);
  for (int k = first; k < grid_.nz - 1; ++k) {
    const SliceRequest request = required(k + 1);
    stepper_.start(slices_.at(k), slices_.at(k + 1), request);
    if (slices_.is_async()) {
      hand_over(k);
      paint(k + 2);
    }
    finish_step(k + 1, request);
    if (!slices_.is_async()) {
      hand_over(k + 1);
      paint(k + 2);
    }
  }
  hand_over(grid_.nz - 1);
  timed(totals_.files, [&] {
    for (Sink* sink : sinks_) sink->finish();
  });
}

}  // namespace

void propagate(const Grid& grid, Slices& slices, Stepper& stepper,
               std::span<FieldMask* const> masks, std::span<Sink* const> sinks,
               std::span<SliceObserver* const> observers, int after, PropagationTotals& totals) {
  if (grid.nz < 1) return;
  Propagation(grid, slices, stepper, masks, sinks, observers, totals).run(after);
}
