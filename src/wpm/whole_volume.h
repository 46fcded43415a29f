// Slices of arrays that hold a whole volume.
#pragma once

#include "system/index_stack.h"
#include "wpm/slice.h"

// Over arrays of the caller's, [nz][ny][nx] each: slice 0 of E and F is the incident field, the
// others are 0, N is painted. Clears and copies nothing. stack, if there is one, knows which slices
// are alike.
class WholeVolume : public Slices {
 public:
  WholeVolume(const Grid& grid, cpx* E, double* F, const cpx* N, const IndexStack* stack = nullptr,
              SliceDevice* device = nullptr)
      : Slices(device), plane_(grid.plane()), E_(E), F_(F), N_(N), stack_(stack) {}

  [[nodiscard]] bool are_kept() const override { return true; }
  [[nodiscard]] std::size_t samples() const override { return plane_; }

 private:
  Slice slice(int k, bool /*is_new*/) override {
    const std::size_t begin = static_cast<std::size_t>(k) * plane_;
    return {E_ + begin, F_ + begin, N_ + begin, stack_ != nullptr ? stack_->stretch(k) : -1};
  }

  std::size_t plane_;
  cpx* E_;
  double* F_;
  const cpx* N_;
  const IndexStack* stack_;
};
