#include "system/overrides.h"

#include <cstdlib>

#include "diagnostics.h"
#include "log.h"
#include "system/keys.h"
#include "system/suggest.h"

namespace {

// "layer3.r=5" in its parts.
struct Override {
  std::string text;     // as given, for messages
  std::string section;  // without its number
  std::string number;
  std::string key;
  std::string value;
};

[[noreturn]] void refuse(const Override& o, const std::string& why) {
  diagnostics::fail("--set " + o.text + ": " + why);
}

Override take_apart(const std::string& text) {
  Override o;
  o.text = text;
  std::string bare = text;
  removeBlanks(bare.data());
  bare.resize(bare.find('\0') == std::string::npos ? bare.size() : bare.find('\0'));
  const std::size_t assign = bare.find('=');
  const std::size_t dot = bare.find('.');
  if (assign == std::string::npos || dot > assign || assign + 1 == bare.size())
    refuse(o, "write SECTION.KEY=VALUE, such as layer3.r=5000");
  const std::string name = bare.substr(0, dot);
  const std::size_t digits = name.find_last_not_of("0123456789") + 1;
  o.section = name.substr(0, digits);
  o.number = name.substr(digits);
  o.key = bare.substr(dot + 1, assign - dot - 1);
  o.value = bare.substr(assign + 1);
  return o;
}

// The place of the record that the override means.
std::size_t place(const Override& o, std::size_t count, bool takes_first) {
  const std::string has = "the configuration has " + std::to_string(count) + " [" + o.section +
                          (count == 1 ? "]" : "] sections");
  if (o.number.empty()) {
    if (count == 0 || (count > 1 && !takes_first))
      refuse(o, has + "; write " + o.section + "1 for the first");
    return 0;
  }
  const unsigned long number = std::strtoul(o.number.c_str(), nullptr, 10);
  if (number < 1 || number > count) refuse(o, has + ", numbered from 1");
  return number - 1;
}

template <typename Record>
void store(const Override& o, std::span<const Key<Record>> keys, Record& record, GivenKeys& given) {
  std::vector<std::string_view> names;
  for (const Key<Record>& key : keys) {
    names.push_back(key.name);
    if (o.key != key.name) continue;
    const Reading reading = key.store(record, o.value);
    if (reading.kind == Reading::kUnknownWord)
      refuse(o, "unknown value " + quoted(o.value) + " of " + quoted(key.name) +
                    suggestion(o.value, {key.keywords.begin(), key.keywords.end()}));
    if (reading.kind != Reading::kRead)
      refuse(o, "value " + quoted(o.value) + " of " + quoted(key.name) + " " + reading.text);
    given.push_back({key.name, o.value, 0});
    return;
  }
  refuse(o, "unknown key " + quoted(o.key) + " in [" + o.section + "]" + suggestion(o.key, names));
}

void apply(const Override& o, Description& d) {
  if (o.section == "global") {
    if (!o.number.empty()) refuse(o, "[global] has no number");
    store(o, global_keys(), d.so, d.global_keys);
    // As the line that it stands for would have, had it stood before the layers.
    if (o.key == "permittivity") d.by_permittivity.assign(d.layers.size(), d.so.permittivity);
  } else if (o.section == "wave") {
    const std::size_t i = place(o, d.waves.size(), true);
    store(o, wave_keys(), d.waves[i], d.wave_keys[i]);
  } else if (o.section == "layer") {
    const std::size_t i = place(o, d.layers.size(), false);
    store(o, layer_keys(), d.layers[i], d.layer_keys[i]);
  } else if (o.section == "monitor") {
    const std::size_t i = place(o, d.monitors.size(), false);
    store(o, monitor_keys(), d.monitors[i], d.monitor_keys[i]);
  } else {
    refuse(o, "unknown section " + quoted(o.section) +
                  suggestion(o.section, {"global", "wave", "layer", "monitor"}));
  }
}

}  // namespace

void apply_overrides(const std::vector<std::string>& overrides, Description& d, bool is_quiet) {
  const Log log(is_quiet);
  for (const std::string& text : overrides) {
    const Override o = take_apart(text);
    apply(o, d);
    log << "\t\t\t\t\t" << o.section << o.number << '.' << o.key << " =\t" << o.value << std::endl;
  }
}
