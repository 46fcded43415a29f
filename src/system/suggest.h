// Messages about unknown names in the configuration file.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The text in single quotes, control characters written as \r, \t or \xNN.
std::string quoted(std::string_view text);

// The known name at the smallest edit distance (Levenshtein, with swaps of neighbours), ignoring
// case. Empty if none is near enough to be a likely typing error.
std::string_view nearest_name(std::string_view name, const std::vector<std::string_view>& known);

// "; did you mean 'lambda'?", or nothing if no known name is near.
std::string suggestion(std::string_view name, const std::vector<std::string_view>& known);
