// The input of lint: a description and values derived from it.
#pragma once

#include <string>
#include <vector>

#include "joined.h"
#include "system/keys.h"
#include "system/stack_plan.h"

struct LintContext {
  explicit LintContext(const Description& description);

  const Description& d;
  std::vector<LayerPlace> places;
  double lambda;            // of the run, file units
  double densest = 0;       // the largest index of any layer; 0 if none
  double entry = 0;         // the index of slice 0; 0 if it varies or is unknown
  std::size_t counted = 0;  // the first wave that contributes to the field

  // A warning that begins with the file, the line if it is not 0, and the section's tag.
  void warn(int line, const char* tag, const std::string& text) const;
};

bool is_default(const GivenKey& key);

// The keyword of this key for the value of the field in the record.
template <typename Record, typename Kind>
std::string_view word_of(std::span<const Key<Record>> keys, std::string_view name,
                         const Record& record, Kind Record::*field) {
  for (const Key<Record>& key : keys) {
    if (key.name != name) continue;
    Record other;
    for (const std::string_view word : key.keywords)
      if (key.store(other, std::string(word)).kind == Reading::kRead &&
          other.*field == record.*field)
        return word;
  }
  return {};
}

// Whether the index of one slice of the layer depends on x or y.
bool varies_sideways(const struct_layer& l);

void advise_on_waves(const LintContext& scene);
void advise_on_layers(const LintContext& scene);
