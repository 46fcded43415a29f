// Values of the command line that replace those of the configuration file.
#pragma once

#include <string>
#include <vector>

#include "system/description.h"

// The parts of SECTION.KEY, such as layer3.r.
struct KeyName {
  explicit KeyName(const std::string& text);

  std::string section;  // without its number
  std::string number;   // digits, or empty
  std::string key;      // empty if there is no point
};

// The index of the section among those of its kind, from 0. Throws Error with a message that begins
// with `place` if the description has no such section or key.
std::size_t section_index(const KeyName& name, const Description& d, const std::string& place);

// Each text is SECTION.KEY=VALUE: global, wave, layer or monitor, the latter three with a number
// from 1. Without one, wave is the first; layer and monitor are the only one. Blanks are ignored.
// Later texts win. Stores values like the file's lines and echoes them to the log unless is_quiet.
// Throws Error if a name or value is not fully understood.
void apply_overrides(const std::vector<std::string>& overrides, Description& d, bool is_quiet);
