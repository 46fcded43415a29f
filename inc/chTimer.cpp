#include "chTimer.h"

int chTimerGetTime(chTimerTimestamp* p) {
  return clock_gettime(CLOCK_MONOTONIC, p);
}

double chTimerElapsedTime(const chTimerTimestamp* pStart, const chTimerTimestamp* pStop) {
  return static_cast<double>(pStop->tv_sec - pStart->tv_sec) +
         static_cast<double>(pStop->tv_nsec - pStart->tv_nsec) / 1000000000.0;
}
