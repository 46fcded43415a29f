// Conversion of configuration values from text.
#pragma once

#include <string>

// The result of reading a value. text ends a sentence that begins with the value: what was read
// instead (kPartly), or what it must be (kRefused).
struct Reading {
  enum Kind { kRead, kPartly, kUnknownWord, kRefused } kind = kRead;
  std::string text{};
};

// The values that a key accepts.
struct Range {
  double lowest, highest;
  bool excludes_ends;
  const char* text;  // such as "a number above 0"
};

// The lenient readers of the format's old keys. They accept the C library's conversion, 0 if there
// is no number. Text that is not read to its end or does not fit is kPartly.
Reading read_real(const std::string& text, double& value);   // strtod
Reading read_whole(const std::string& text, int& value);     // strtol in base 10, cut to 32 bits
Reading read_loose_flag(const std::string& text, bool& on);  // on for 1, off for all else

// The strict readers: a full, finite number within the range, or kRefused and value unchanged.
Reading read_real_within(const std::string& text, const Range& range, double& value);
Reading read_whole_within(const std::string& text, const Range& range, int& value);
Reading read_strict_flag(const std::string& text, bool& on);  // 0 or 1
