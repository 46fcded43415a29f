#include "system/lines.h"

#include <array>

#include "system/system.h"

SplitLine split(const std::string& line) {
  SplitLine parts;
  const std::size_t begin = line.find_first_not_of(ASSIGN);
  if (begin == std::string::npos) return parts;
  const std::size_t assign = line.find(ASSIGN, begin);
  parts.left = line.substr(begin, assign - begin);
  if (assign == std::string::npos) return parts;
  parts.has_assign = true;
  const std::size_t value = line.find_first_not_of(END, assign + 1);
  if (value != std::string::npos)
    parts.right = line.substr(value, line.find_first_of(END, value) - value);
  return parts;
}

bool read_line(std::istream& file, Line& line) {
  std::array<char, MAX_CHARS_PER_LINE> buffer{};
  file.getline(buffer.data(), buffer.size());
  const auto count = static_cast<std::size_t>(file.gcount());
  if (file.bad() || count == 0) return false;  // an empty line has a count of 1
  line.is_too_long = file.fail();
  line.text = buffer.data();
  // getline counts the end of the line, which it does not store
  const std::size_t stored = line.is_too_long || file.eof() ? count : count - 1;
  line.is_windows = stored > 0 && buffer[stored - 1] == '\r';
  return true;
}
