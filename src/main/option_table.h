// The names of the options, for those who misspell one.
#pragma once

#include <string>

struct OptionName {
  const char* short_form;  // "" if there is none
  const char* long_form;
  bool takes_value;
};

// Whether word, one or two dashes in front, is the keyword.
bool is_option(const char* word, const char* keyword);

// The option that word, dashes included, is; null if there is none.
const OptionName* find_option(const std::string& word);

// "; did you mean '--fast'?" for a name, dashes included; letters that are options each are told
// one by one.
std::string option_suggestion(const std::string& name);
