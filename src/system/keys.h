// The vocabulary of the configuration file: which key of which section fills which field. The
// parser, its suggestions, the tests and the manual all walk these tables.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "system/monitor.h"
#include "system/numbers.h"
#include "system/system.h"

// A key stores the text of its value in the record, and says what became of it. A word that is none
// of the keywords, and a value that is refused, leave the record as it was.
template <typename Record>
struct Key {
  std::string_view name;
  Reading (*store)(Record& record, const std::string& value);
  std::span<const std::string_view> keywords = {};  // empty: a number, a flag or a name
};

std::span<const Key<struct_sysOptions>> global_keys();
std::span<const Key<struct_emfield>> wave_keys();
std::span<const Key<struct_layer>> layer_keys();
std::span<const Key<Monitor>> monitor_keys();

// A tag opens a section (then closes is NONE) or closes one (then opens is NONE).
struct Tag {
  std::string_view text;
  section opens;
  section closes;
};

std::span<const Tag> tags();
