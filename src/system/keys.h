// The vocabulary of the configuration file: which key of which section fills which field. The
// parser, its suggestions, the tests and the manual all walk these tables.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "system/system.h"

// A key stores the text of its value in the record. A key with keywords returns false, and leaves
// the field, for a text that is none of them.
template <typename Record>
struct Key {
  std::string_view name;
  bool (*store)(Record& record, const std::string& value);
  std::span<const std::string_view> keywords = {};  // empty: a number or a flag
};

std::span<const Key<struct_sysOptions>> global_keys();
std::span<const Key<struct_emfield>> wave_keys();
std::span<const Key<struct_layer>> layer_keys();

// A tag opens a section (then closes is NONE) or closes one (then opens is NONE).
struct Tag {
  std::string_view text;
  section opens;
  section closes;
};

std::span<const Tag> tags();
