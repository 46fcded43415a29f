#include "system/suggest.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

bool same_letter(char a, char b) {
  return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

// Optimal string alignment distance: insert, delete, replace, swap two neighbours.
std::size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (same_letter(a[i - 1], b[j - 1]) ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      if (i > 1 && j > 1 && same_letter(a[i - 1], b[j - 2]) && same_letter(a[i - 2], b[j - 1]))
        row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(row);
  }
  return last[b.size()];
}

std::string_view trimmed(std::string_view text) {
  const auto is_space = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace

std::string quoted(std::string_view text) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\t') {
      result += "\\t";
    } else if (c == '\r') {
      result += "\\r";
    } else if (std::iscntrl(static_cast<unsigned char>(c)) != 0) {
      char code[8];
      std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned char>(c));
      result += code;
    } else {
      result += c;
    }
  }
  return result + "'";
}

std::string_view nearest_name(std::string_view name, const std::vector<std::string_view>& known) {
  const std::string_view core = trimmed(name);
  // Allows one wrong letter in a short name, two in a long one.
  std::size_t best = core.size() < 5 ? 2 : 3;
  std::string_view nearest;
  for (const std::string_view candidate : known) {
    // Each extra letter of one name is an edit.
    const std::size_t longer = std::max(core.size(), candidate.size());
    if (longer - std::min(core.size(), candidate.size()) >= best) continue;
    const std::size_t distance = edit_distance(core, candidate);
    if (distance >= best || distance >= longer) continue;
    best = distance;
    nearest = candidate;
  }
  return nearest;
}

std::string suggestion(std::string_view name, const std::vector<std::string_view>& known) {
  const std::string_view nearest = nearest_name(name, known);
  return nearest.empty() ? std::string() : "; did you mean '" + std::string(nearest) + "'?";
}
