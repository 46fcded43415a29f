// Conversions from a value's text to the field of a record, for the key tables.
#pragma once

#include <array>
#include <cmath>
#include <optional>
#include <string_view>

#include "system/numbers.h"

namespace stores {

template <auto Field, typename Record>
Reading real(Record& record, const std::string& value) {
  return read_real(value, record.*Field);
}

template <auto Field, typename Record>
Reading whole(Record& record, const std::string& value) {
  return read_whole(value, record.*Field);
}

// The extents of the domain are whole numbers of the file's unit: fractional digits are lost.
template <auto Field, typename Record>
Reading whole_extent(Record& record, const std::string& value) {
  int read = 0;
  Reading reading = read_whole(value, read);
  record.*Field = read;
  return reading;
}

template <auto Field, typename Record>
Reading loose_flag(Record& record, const std::string& value) {
  return read_loose_flag(value, record.*Field);
}

// The conversions below refuse invalid values.

constexpr Range kAny = {-HUGE_VAL, HUGE_VAL, true, "a number"};
constexpr Range kPositive = {0, HUGE_VAL, true, "a number above 0"};
constexpr Range kNotNegative = {0, HUGE_VAL, false, "a number of 0 or more"};
constexpr Range kAngle = {-90, 90, true, "an angle between -90 and 90 degrees"};

template <auto Field, const Range& Within, typename Record>
Reading strict_real(Record& record, const std::string& value) {
  return read_real_within(value, Within, record.*Field);
}

template <auto Field, const Range& Within, typename Record>
Reading optional_real(Record& record, const std::string& value) {
  double read = 0;
  Reading reading = read_real_within(value, Within, read);
  if (reading.kind == Reading::kRead) record.*Field = read;
  return reading;
}

template <auto Field, const Range& Within, typename Record>
Reading strict_whole(Record& record, const std::string& value) {
  return read_whole_within(value, Within, record.*Field);
}

template <auto Field, typename Record>
Reading strict_flag(Record& record, const std::string& value) {
  return read_strict_flag(value, record.*Field);
}

// A name; tabs and carriage returns around it are not part of it.
template <auto Field, typename Record>
Reading name(Record& record, const std::string& value) {
  const std::size_t first = value.find_first_not_of("\t\r");
  if (first == std::string::npos) return {Reading::kRefused, "must be a name"};
  record.*Field = value.substr(first, value.find_last_not_of("\t\r") - first + 1);
  return {};
}

// Words and their values, place by place.
template <typename Meaning, std::size_t Count>
struct Words {
  std::array<std::string_view, Count> text;
  std::array<Meaning, Count> meaning;
};

template <auto Field, const auto& Table, typename Record>
Reading word(Record& record, const std::string& value) {
  for (std::size_t i = 0; i < Table.text.size(); ++i) {
    if (value != Table.text[i]) continue;
    record.*Field = Table.meaning[i];
    return {};
  }
  return {Reading::kUnknownWord};
}

}  // namespace stores
