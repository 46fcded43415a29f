#include "main/progress_line.h"

#include <cstdio>
#include <string>

#include "diagnostics.h"
#include "wpm/progress.h"

ProgressLine::ProgressLine(const Grid& grid, bool is_plain)
    : slices_(grid.nz), voxels_per_slice_(static_cast<double>(grid.plane())), is_plain_(is_plain) {}

ProgressLine::~ProgressLine() {
  if (is_shown_ && !is_plain_) diagnostics::progress("");
}

std::string ProgressLine::text(int k, double seconds, Sum sum) const {
  const int done = k - first_;
  const double rate = done * voxels_per_slice_ / seconds;
  const double left = seconds / done * (slices_ - 1 - k);
  char rate_text[32];
  std::snprintf(rate_text, sizeof rate_text, rate < 1e9 ? "%.3g M" : "%.3g G",
                rate < 1e9 ? rate * 1e-6 : rate * 1e-9);
  return "slice " + std::to_string(k) + " of " + std::to_string(slices_ - 1) + ", " +
         std::to_string(100LL * k / (slices_ - 1)) + " %, " + rate_text + "voxel/s, " +
         name_of(sum) + ", " + duration_in_words(left) + " left";
}

void ProgressLine::slice_done(int k, const Slice& /*slice*/, const StepResult& step) {
  if (first_ < 0) {
    first_ = k;
    begin_ = shown_ = Clock::now();
    return;
  }
  const Clock::time_point now = Clock::now();
  const auto pause = is_plain_ ? std::chrono::milliseconds(60000) : std::chrono::milliseconds(500);
  if (now - shown_ < pause) return;
  shown_ = now;
  is_shown_ = true;
  const std::string line = text(k, std::chrono::duration<double>(now - begin_).count(), step.sum);
  if (is_plain_)
    diagnostics::tell(line);
  else
    diagnostics::progress(line);
}
