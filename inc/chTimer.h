// A monotonic wall-clock timer.
#pragma once

#include <ctime>

using chTimerTimestamp = timespec;

// Reads CLOCK_MONOTONIC into *p; returns the result of clock_gettime, 0 or -1.
int chTimerGetTime(chTimerTimestamp* p);

// Seconds from *pStart to *pStop.
double chTimerElapsedTime(const chTimerTimestamp* pStart, const chTimerTimestamp* pStop);

// start() and stop() each store a time and return 0 on success. getTime() returns the seconds
// between them, 0 if the timer never ran.
class ChTimer {
 public:
  int start() { return chTimerGetTime(&m_start); }
  int stop() { return chTimerGetTime(&m_end); }
  [[nodiscard]] double getTime() const { return chTimerElapsedTime(&m_start, &m_end); }

 private:
  chTimerTimestamp m_start{};
  chTimerTimestamp m_end{};
};
