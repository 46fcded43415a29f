// How far a long propagation is, shown to the person at the terminal.
#pragma once

#include <chrono>
#include <string>

class SliceProgress {
 public:
  explicit SliceProgress(int steps);
  ~SliceProgress();
  SliceProgress(const SliceProgress&) = delete;
  SliceProgress& operator=(const SliceProgress&) = delete;

  // One more step is done. The display follows at most twice a second, and not in short runs.
  void step_done();

 private:
  using Clock = std::chrono::steady_clock;

  int steps_;
  int done_ = 0;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point shown_ = begin_;
};

// "12 s", "3 min", "2.5 h": a duration in words of about two digits.
std::string duration_in_words(double seconds);
