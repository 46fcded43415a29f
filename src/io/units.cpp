#include "io/units.h"

#include <cmath>
#include <cstdio>

std::string length_unit(const Grid& grid) {
  constexpr const char* kNames[] = {"m", "dm", "cm", "mm", "um", "nm", "pm"};
  for (int scl = M; scl <= PM; ++scl)
    if (metres_per_unit(static_cast<scale>(scl)) == grid.metres) return kNames[scl];
  return "units";
}

std::string in_words(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

std::string bytes_in_words(double bytes) {
  constexpr const char* kUnits[] = {" bytes", " kB", " MB", " GB", " TB"};
  std::size_t unit = 0;
  for (; bytes >= 1000.0 && unit + 1 < std::size(kUnits); ++unit) bytes /= 1000.0;
  char text[32];
  std::snprintf(text, sizeof text, "%.3g", bytes);
  return text + std::string(kUnits[unit]);
}
