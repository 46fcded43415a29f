// Whether a field is light still: neither zero everywhere nor infinite nor NaN.
#pragma once

#include <string>

#include "wpm/march.h"

// Of count samples from E on. Zero everywhere is dark; one sample that is not finite decides.
FieldState field_state(const cpx* E, std::size_t count);

// Finds the first slice of a run whose field is lost after one that is light. A run that begins
// without light is not its business.
class FieldCheck : public SliceObserver {
 public:
  explicit FieldCheck(const Grid& grid) : FieldCheck(grid.plane()) {}
  // Of slices of so many samples: if ranks have windows of a slice, all ranks check together.
  explicit FieldCheck(std::size_t samples) : samples_(samples) {}
  void slice_done(int k, const Slice& slice, const StepResult& step) override;

  // "", or the warning: "the field is zero from slice 12 on".
  [[nodiscard]] std::string verdict() const;

 private:
  std::size_t samples_;
  FieldState first_ = FieldState::kLight;
  FieldState found_ = FieldState::kLight;
  int found_at_ = 0;
};
