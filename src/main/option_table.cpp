#include "main/option_table.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "system/suggest.h"

namespace {

constexpr OptionName kOptions[] = {
    {"h", "help", false},        {"", "help-all", false},      {"v", "version", false},
    {"q", "quiet", false},       {"i", "config-file", true},   {"x", "cross-section", true},
    {"l", "layer", true},        {"r", "store-results", true}, {"p", "run-cpu", false},
    {"g", "run-gpu", false},     {"c", "compare", false},      {"k", "kernel", true},
    {"b", "block-size", true},   {"", "fast", false},          {"", "stream", false},
    {"", "strict", false},       {"", "check", false},         {"", "independent", false},
    {"", "threads", true},       {"", "tolerance", true},      {"", "progress", true},
    {"", "field", true},         {"", "checkpoint", true},     {"", "checkpoint-every", true},
    {"", "set", true},           {"", "sweep", true},          {"", "jobs", true},
    {"", "table", true},         {"", "points", true},         {"", "folder", true},
    {"", "retry-failed", false},
};

std::string_view without_dashes(std::string_view word) {
  for (int i = 0; i < 2 && !word.empty() && word.front() == '-'; ++i) word.remove_prefix(1);
  return word;
}

// "-pg": letters of options that were meant to stand alone.
bool is_run_of_letters(std::string_view letters) {
  return letters.size() > 1 && std::all_of(letters.begin(), letters.end(), [](char c) {
           return std::any_of(std::begin(kOptions), std::end(kOptions),
                              [c](const OptionName& o) { return o.short_form[0] == c; });
         });
}

}  // namespace

const OptionName* find_option(const std::string& word) {
  for (const OptionName& option : kOptions)
    if ((option.short_form[0] != '\0' && is_option(word.c_str(), option.short_form)) ||
        is_option(word.c_str(), option.long_form))
      return &option;
  return nullptr;
}

std::string option_suggestion(const std::string& name) {
  const std::string_view core = without_dashes(name);
  std::vector<std::string_view> known;
  for (const OptionName& option : kOptions) known.emplace_back(option.long_form);
  const std::string_view nearest = nearest_name(core, known);
  if (!nearest.empty()) return "; did you mean '--" + std::string(nearest) + "'?";
  if (!is_run_of_letters(core)) return "; --help-all lists the options";
  std::string apart = "; options stand apart:";
  for (const char c : core) (apart += " -") += c;
  return apart;
}
