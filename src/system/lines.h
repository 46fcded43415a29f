// The lines of a configuration file.
#pragma once

#include <istream>
#include <string>

// A line splits into the text before the first equals sign and the value behind it, which ends at a
// semicolon. Leading equals signs belong to neither, nor do leading semicolons of the value.
struct SplitLine {
  std::string left;
  std::string right;
  bool has_assign = false;
};

SplitLine split(const std::string& line);

struct Line {
  std::string text;          // without its end, blanks included, up to a stray zero byte
  bool is_too_long = false;  // only the beginning that the limit allows was read
  bool is_windows = false;   // a carriage return stands at its end
};

// The next line; false at the end of the file or when it cannot be read. Holds no more of a line
// than the limit allows.
bool read_line(std::istream& file, Line& line);
