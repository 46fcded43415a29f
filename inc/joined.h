// Messages of several parts.
#pragma once

#include <sstream>
#include <string>

// Its parts in the default format of streams: joined("dx = ", 250, " m").
template <typename... Parts>
std::string joined(const Parts&... parts) {
  std::ostringstream text;
  (text << ... << parts);
  return text.str();
}
