// How far a run is, for the person at the terminal or the log of a batch system.
#pragma once

#include <chrono>

#include "wpm/march.h"

class ProgressLine : public SliceObserver {
 public:
  // is_plain: a line a minute, where no terminal is either.
  ProgressLine(const Grid& grid, bool is_plain);
  ~ProgressLine() override;
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void slice_done(int k, const Slice& slice, const StepResult& step) override;

 private:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] std::string text(int k, double seconds, Sum sum) const;

  int slices_;
  double voxels_per_slice_;
  bool is_plain_;
  int first_ = -1;
  bool is_shown_ = false;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point shown_ = begin_;
};
