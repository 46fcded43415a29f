// The log on standard output, silent in quiet mode.
#pragma once

#include <iostream>

// Log(is_quiet) << "text" << value << std::endl prints what std::cout would, or nothing.
class Log {
 public:
  explicit Log(bool is_quiet = false) : is_quiet_(is_quiet) {}

  [[nodiscard]] bool is_quiet() const { return is_quiet_; }

  template <typename T>
  const Log& operator<<(const T& value) const {
    if (!is_quiet_) std::cout << value;
    return *this;
  }

  const Log& operator<<(std::ostream& (*manipulator)(std::ostream&)) const {
    if (!is_quiet_) std::cout << manipulator;
    return *this;
  }

 private:
  bool is_quiet_;
};
