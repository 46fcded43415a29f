#include "main/sweep_subject.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "diagnostics.h"
#include "system/keys.h"
#include "system/suggest.h"

namespace sweep {
namespace {

using Names = std::vector<std::string_view>;

template <typename Record>
Names names_of(std::span<const Key<Record>> keys) {
  Names names;
  for (const Key<Record>& key : keys) names.push_back(key.name);
  return names;
}

// A section that keys can be set in: how many the configuration has, and its keys.
struct Section {
  std::string_view name;
  std::size_t count;
  Names keys;
};

std::vector<Section> sections_of(const Description& d) {
  return {{"global", 1, names_of(global_keys())},
          {"wave", d.waves.size(), names_of(wave_keys())},
          {"layer", d.layers.size(), names_of(layer_keys())},
          {"monitor", d.monitors.size(), names_of(monitor_keys())}};
}

// SECTION.KEY in its parts; a name without a point has no key.
struct Name {
  explicit Name(const std::string& text)
      : key(text.substr(std::min(text.find('.'), text.size() - 1) + 1)) {
    const std::string head = text.substr(0, text.find('.'));
    section = head.substr(0, head.find_last_not_of("0123456789") + 1);
    std::size_t value = 0;
    if (std::from_chars(head.data() + section.size(), head.data() + head.size(), value).ec ==
        std::errc())
      number = value;
  }

  std::string section;
  std::optional<std::size_t> number;  // from 1
  std::string key;
};

void require_place(const std::string& text, const Description& d) {
  const Name name(text);
  const std::string swept = "--sweep " + text + ": ";
  Names known;
  for (const Section& section : sections_of(d)) {
    known.push_back(section.name);
    if (section.name != name.section) continue;
    if (name.number && section.name == "global")
      diagnostics::fail(swept + "[global] has no number");
    // The first wave, which has the wavelength, needs no number; nor does what is alone.
    const bool is_clear = name.number || section.count == 1 || section.name == "wave";
    const std::size_t number = name.number.value_or(1);
    if (!is_clear || number < 1 || number > section.count)
      diagnostics::fail(swept + "the configuration has " + std::to_string(section.count) + " [" +
                        name.section + "], numbered from 1");
    for (const std::string_view key : section.keys)
      if (key == name.key) return;
    diagnostics::fail(swept + "unknown key " + quoted(name.key) + " in [" + name.section + "]" +
                      suggestion(name.key, section.keys));
  }
  diagnostics::fail(swept + "unknown section " + quoted(name.section) +
                    suggestion(name.section, known));
}

}  // namespace

Subject::Subject(const Plan& plan) : axes_(plan.axes) {
  read_description(plan.configuration, plan.overrides, description_, true);
  for (const Axis& axis : axes_) require_place(axis.key, description_);
}

std::vector<std::string> Subject::tables(const std::vector<std::string>& values) const {
  std::vector<std::string> files;
  for (std::size_t m = 0; m < description_.monitors.size(); ++m) {
    const Monitor& monitor = description_.monitors[m];
    if (monitor.type == MonitorType::kField) continue;
    std::string file = monitor.file;
    for (std::size_t a = 0; a < axes_.size(); ++a) {
      const Name name(axes_[a].key);
      const bool is_its_name =
          name.section == "monitor" && name.key == "file" && name.number.value_or(1) == m + 1;
      if (is_its_name) file = values[a];
    }
    files.push_back(file);
  }
  return files;
}

}  // namespace sweep
