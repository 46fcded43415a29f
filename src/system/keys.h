// The keys of the configuration file: each key of a section fills one field. The parser, its
// suggestions, the tests and the manual all use these tables.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "system/monitor.h"
#include "system/numbers.h"
#include "system/system.h"

// A set of layer kinds or wave shapes, one bit each.
using Kinds = std::uint32_t;

template <typename... Enumerators>
constexpr Kinds kinds(Enumerators... each) {
  return ((Kinds{1} << each) | ... | Kinds{0});
}

constexpr Kinds kEveryKind = ~Kinds{0};

// A key stores the text of its value in the record and returns the result. An unknown word or a
// refused value leaves the record unchanged.
template <typename Record>
struct Key {
  std::string_view name;
  Reading (*store)(Record& record, const std::string& value);
  std::span<const std::string_view> keywords = {};  // empty: a number, a flag or a name
  Kinds used_by = kEveryKind;                       // layers and waves
};

std::span<const Key<struct_sysOptions>> global_keys();
std::span<const Key<struct_emfield>> wave_keys();
std::span<const Key<struct_layer>> layer_keys();
std::span<const Key<Monitor>> monitor_keys();

template <typename Record>
std::vector<std::string_view> names_of(std::span<const Key<Record>> keys) {
  std::vector<std::string_view> names;
  for (const Key<Record>& key : keys) names.push_back(key.name);
  return names;
}

// Whether the layer's kind, or the wave's shape, uses the key.
bool is_used(const struct_layer& l, std::string_view key);
bool is_used(const struct_emfield& wave, std::string_view key);

// A tag opens a section (then closes is NONE) or closes one (then opens is NONE).
struct Tag {
  std::string_view text;
  section opens;
  section closes;
};

std::span<const Tag> tags();
