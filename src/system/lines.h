// The lines of a configuration file.
#pragma once

#include <istream>
#include <string>

// A line splits into the text before the first equals sign and the value after it. The value ends
// at a semicolon. Leading equals signs and semicolons of the value are dropped.
struct SplitLine {
  std::string left;
  std::string right;
  bool has_assign = false;
};

SplitLine split(const std::string& line);

struct Line {
  std::string text;          // without its end, blanks included, up to a stray zero byte
  bool is_too_long = false;  // only the part within the limit was read
  bool is_windows = false;   // it ends with a carriage return
};

// The next line; false at the end of the file or if it cannot be read. Stores no more of a line
// than the limit allows.
bool read_line(std::istream& file, Line& line);
