#include "system/numbers.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>

#include "joined.h"

namespace {

// Tabs and carriage returns are not blanks of the format, but may follow a number.
bool is_at_end(const char* rest) {
  while (*rest == '\t' || *rest == '\r' || *rest == '\v' || *rest == '\f') ++rest;
  return *rest == '\0';
}

template <typename Number>
Reading partly(Number value, const char* wanted) {
  return {Reading::kPartly, joined("is read as ", value, "; write ", wanted)};
}

// Whether the whole text is a number that a double can represent.
bool is_full_real(const std::string& text, double& value) {
  char* end = nullptr;
  errno = 0;
  value = std::strtod(text.c_str(), &end);
  const bool fits = std::isfinite(value) && errno != ERANGE;
  return end != text.c_str() && is_at_end(end) && fits;
}

bool is_full_whole(const std::string& text, int& value) {
  char* end = nullptr;
  errno = 0;
  const long wide = std::strtol(text.c_str(), &end, 10);
  value = static_cast<int>(wide);
  const bool fits = wide >= INT_MIN && wide <= INT_MAX && errno != ERANGE;
  return end != text.c_str() && is_at_end(end) && fits;
}

bool is_within(const Range& range, double value) {
  return range.excludes_ends ? value > range.lowest && value < range.highest
                             : value >= range.lowest && value <= range.highest;
}

Reading refused(const char* wanted) {
  return {Reading::kRefused, std::string("must be ") + wanted};
}

}  // namespace

Reading read_real(const std::string& text, double& value) {
  return is_full_real(text, value) ? Reading() : partly(value, "a number such as 1.5e3");
}

Reading read_whole(const std::string& text, int& value) {
  return is_full_whole(text, value) ? Reading()
                                    : partly(value, "a whole number, digits only, below 2^31");
}

Reading read_loose_flag(const std::string& text, bool& on) {
  on = text == "1";
  return on || text == "0" ? Reading() : partly(0, "1 or 0");
}

Reading read_real_within(const std::string& text, const Range& range, double& value) {
  double read = 0;
  if (!is_full_real(text, read) || !is_within(range, read)) return refused(range.text);
  value = read;
  return {};
}

Reading read_whole_within(const std::string& text, const Range& range, int& value) {
  int read = 0;
  if (!is_full_whole(text, read) || !is_within(range, read)) return refused(range.text);
  value = read;
  return {};
}

Reading read_strict_flag(const std::string& text, bool& on) {
  if (text != "0" && text != "1") return refused("0 or 1");
  on = text == "1";
  return {};
}
