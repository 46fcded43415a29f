#include "wpm/progress.h"

#include <cstdio>
#include <string>

#include "diagnostics.h"

SliceProgress::SliceProgress(int steps) : steps_(steps) {}

SliceProgress::~SliceProgress() {
  if (shown_ != begin_) diagnostics::progress("");
}

void SliceProgress::step_done() {
  ++done_;
  const Clock::time_point now = Clock::now();
  if (now - shown_ < std::chrono::milliseconds(500) || !diagnostics::shows_notes()) return;
  shown_ = now;
  const double elapsed = std::chrono::duration<double>(now - begin_).count();
  const double left = elapsed / done_ * (steps_ - done_);
  diagnostics::progress("slice " + std::to_string(done_) + " of " + std::to_string(steps_) + ", " +
                        std::to_string(100LL * done_ / steps_) + " %, " + duration_in_words(left) +
                        " left");
}

std::string duration_in_words(double seconds) {
  char text[48];
  if (seconds < 90)
    std::snprintf(text, sizeof text, "%.0f s", seconds);
  else if (seconds < 5400)
    std::snprintf(text, sizeof text, "%.0f min", seconds / 60);
  else if (seconds < 172800)
    std::snprintf(text, sizeof text, "%.1f h", seconds / 3600);
  else
    std::snprintf(text, sizeof text, "%.1f days", seconds / 86400);
  return text;
}
