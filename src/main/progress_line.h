// How far a run is, for the person at the terminal or the log of a batch system.
#pragma once

#include <chrono>

#include "wpm/march.h"

class ProgressLine : public SliceWatcher {
 public:
  // is_plain: a line a minute, where no terminal is either.
  ProgressLine(const Grid& grid, const Stepper& stepper, bool is_plain);
  ~ProgressLine() override;
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void slice_done(int k, const Slice& slice) override;

 private:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] std::string text(int k, double seconds) const;

  int slices_;
  double voxels_per_slice_;
  const Stepper& stepper_;
  bool is_plain_;
  int first_ = -1;
  bool is_shown_ = false;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point shown_ = begin_;
};
