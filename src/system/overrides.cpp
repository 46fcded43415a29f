#include "system/overrides.h"

#include "diagnostics.h"
#include "log.h"
#include "system/keys.h"
#include "system/suggest.h"

namespace {

// A kind of section with keys that can be set.
struct SectionKind {
  std::string_view name;
  std::size_t count;  // sections in the configuration
  std::vector<std::string_view> keys;
};

std::vector<SectionKind> section_kinds(const Description& d) {
  return {{"global", 1, names_of(global_keys())},
          {"wave", d.waves.size(), names_of(wave_keys())},
          {"layer", d.layers.size(), names_of(layer_keys())},
          {"monitor", d.monitors.size(), names_of(monitor_keys())}};
}

std::size_t index_among(const SectionKind& kind, const std::string& number,
                        const std::string& place) {
  const std::string name(kind.name);
  const std::string has = place + "the configuration has " + std::to_string(kind.count) + " [" +
                          name + (kind.count == 1 ? "]" : "] sections");
  if (name == "global" && !number.empty()) diagnostics::fail(place + "[global] has no number");
  if (number.empty()) {
    // The first wave, which has the wavelength of the run, needs no number.
    if (kind.count == 0 || (kind.count > 1 && name != "wave"))
      diagnostics::fail(has + "; write " + name + "1 for the first");
    return 0;
  }
  int value = 0;
  const Range range = {1, static_cast<double>(kind.count), false, ""};
  if (read_whole_within(number, range, value).kind != Reading::kRead)
    diagnostics::fail(has + ", numbered from 1");
  return static_cast<std::size_t>(value) - 1;
}

// The parts of "layer3.r=5".
struct Override {
  std::string place;  // begins messages
  KeyName name;
  std::string value;
};

Override take_apart(const std::string& text) {
  std::string bare = text;
  removeBlanks(bare.data());
  bare.resize(bare.find('\0') == std::string::npos ? bare.size() : bare.find('\0'));
  const std::string place = "--set " + text + ": ";
  const std::size_t assign = bare.find('=');
  if (assign == std::string::npos || bare.find('.') > assign || assign + 1 == bare.size())
    diagnostics::fail(place + "write SECTION.KEY=VALUE, such as layer3.r=5000");
  return {place, KeyName(bare.substr(0, assign)), bare.substr(assign + 1)};
}

template <typename Record>
void store(const Override& o, std::span<const Key<Record>> keys, Record& record, GivenKeys& given) {
  for (const Key<Record>& key : keys) {
    if (o.name.key != key.name) continue;
    const Reading reading = key.store(record, o.value);
    const std::string value = quoted(o.value) + " of " + quoted(key.name);
    if (reading.kind == Reading::kUnknownWord)
      diagnostics::fail(o.place + "unknown value " + value +
                        suggestion(o.value, {key.keywords.begin(), key.keywords.end()}));
    if (reading.kind != Reading::kRead)
      diagnostics::fail(o.place + "value " + value + " " + reading.text);
    given.push_back({key.name, o.value, 0});
  }
}

void apply(const Override& o, Description& d) {
  const std::size_t i = section_index(o.name, d, o.place);
  if (o.name.section == "wave") {
    store(o, wave_keys(), d.waves[i], d.wave_keys[i]);
  } else if (o.name.section == "layer") {
    store(o, layer_keys(), d.layers[i], d.layer_keys[i]);
  } else if (o.name.section == "monitor") {
    store(o, monitor_keys(), d.monitors[i], d.monitor_keys[i]);
  } else {
    store(o, global_keys(), d.so, d.global_keys);
    // In the file this key precedes the layers.
    if (o.name.key == "permittivity") d.by_permittivity.assign(d.layers.size(), d.so.permittivity);
  }
}

}  // namespace

KeyName::KeyName(const std::string& text) {
  const std::size_t point = text.find('.');
  const std::string head = text.substr(0, point);
  const std::size_t digits = head.find_last_not_of("0123456789") + 1;
  section = head.substr(0, digits);
  number = head.substr(digits);
  if (point != std::string::npos) key = text.substr(point + 1);
}

std::size_t section_index(const KeyName& name, const Description& d, const std::string& place) {
  std::vector<std::string_view> known;
  for (const SectionKind& kind : section_kinds(d)) {
    known.push_back(kind.name);
    if (kind.name != name.section) continue;
    const std::size_t index = index_among(kind, name.number, place);
    for (const std::string_view key : kind.keys)
      if (key == name.key) return index;
    diagnostics::fail(place + "unknown key " + quoted(name.key) + " in [" + name.section + "]" +
                      suggestion(name.key, kind.keys));
  }
  diagnostics::fail(place + "unknown section " + quoted(name.section) +
                    suggestion(name.section, known));
}

void apply_overrides(const std::vector<std::string>& overrides, Description& d, bool is_quiet) {
  const Log log(is_quiet);
  for (const std::string& text : overrides) {
    const Override o = take_apart(text);
    apply(o, d);
    log << "\t\t\t\t\t" << o.name.section << o.name.number << '.' << o.name.key << " =\t" << o.value
        << std::endl;
  }
}
