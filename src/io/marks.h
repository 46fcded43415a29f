// How sinks write where they are, and read it back.
#pragma once

#include <cstring>
#include <string_view>
#include <type_traits>

#include "diagnostics.h"
#include "wpm/sink.h"

// Appends the bytes of a value.
template <typename T>
void put(Mark& mark, const T& value) {
  static_assert(std::is_trivially_copyable_v<T>);
  mark.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// Takes the next value from what is left of a mark. One that is too short ends the process.
template <typename T>
T take_value(std::string_view& rest) {
  static_assert(std::is_trivially_copyable_v<T>);
  T value;
  if (rest.size() < sizeof value)
    diagnostics::fail("the checkpoint does not fit this run; remove it to begin anew");
  std::memcpy(&value, rest.data(), sizeof value);
  rest.remove_prefix(sizeof value);
  return value;
}
