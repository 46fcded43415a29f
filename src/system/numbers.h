// Values of the configuration as text, and what is made of them.
#pragma once

#include <string>

// What became of a value's text. text ends a sentence that begins with the value: what was read
// instead (kPartly), or what it must be (kRefused).
struct Reading {
  enum Kind { kRead, kPartly, kUnknownWord, kRefused } kind = kRead;
  std::string text{};
};

// The values that a key takes.
struct Range {
  double lowest, highest;
  bool excludes_ends;
  const char* text;  // such as "a number above 0"
};

// The loose readers of the format's old keys: what the C library makes of the text always counts,
// 0 if there is no number. What is not read to its end, or does not fit, is kPartly.
Reading read_real(const std::string& text, double& value);   // strtod
Reading read_whole(const std::string& text, int& value);     // strtol in base 10, cut to 32 bits
Reading read_loose_flag(const std::string& text, bool& on);  // on for 1, off for all else

// The strict readers: a full, finite number within the range, or kRefused and value as it was.
Reading read_real_within(const std::string& text, const Range& range, double& value);
Reading read_whole_within(const std::string& text, const Range& range, int& value);
Reading read_strict_flag(const std::string& text, bool& on);  // 0 or 1
