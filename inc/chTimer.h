// A monotonic wall-clock timer.
#pragma once

#include <ctime>

using chTimerTimestamp = timespec;

// Reads CLOCK_MONOTONIC into *p; returns what clock_gettime does, 0 or -1.
int chTimerGetTime(chTimerTimestamp* p);

// Seconds from *pStart to *pStop.
double chTimerElapsedTime(const chTimerTimestamp* pStart, const chTimerTimestamp* pStop);

// start() and stop() note a time each and return 0 on success; getTime() is the seconds between
// them. A timer that never ran gives 0.
class ChTimer {
 public:
  int start() { return chTimerGetTime(&m_start); }
  int stop() { return chTimerGetTime(&m_end); }
  [[nodiscard]] double getTime() const { return chTimerElapsedTime(&m_start, &m_end); }

 private:
  chTimerTimestamp m_start{};
  chTimerTimestamp m_end{};
};
