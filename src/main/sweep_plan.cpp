#include "main/sweep_plan.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <set>

#include "chCommandLine.h"
#include "diagnostics.h"
#include "ranks/ranks.h"
#include "system/numbers.h"

namespace sweep {
namespace {

constexpr std::size_t kMostAxes = 3;
constexpr std::size_t kLongestName = 255;  // of a folder, in bytes

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
    end = text.find(separator, begin);
    parts.push_back(text.substr(begin, end - begin));
  }
  return parts;
}

// A whole number of 1 or more.
std::optional<int> count_of(const std::string& text) {
  int value = 0;
  const Reading reading = read_whole_within(text, {1, INT_MAX, false, ""}, value);
  return reading.kind == Reading::kRead ? std::optional(value) : std::nullopt;
}

std::string twelve_digits(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.12g", value == 0 ? 0.0 : value);
  return text;
}

std::vector<std::string> range(const std::string& option, const std::string& text) {
  const std::vector<std::string> parts = split(text, ':');
  std::vector<double> numbers;
  for (const std::string& part : parts) {
    double value = 0;
    if (read_real(part, value).kind == Reading::kRead) numbers.push_back(value);
  }
  if (numbers.size() != 3 || parts.size() != 3)
    diagnostics::fail(option + ": a range is FROM:TO:STEP, three numbers; a list is A,B,C");
  const double from = numbers[0];
  const double to = numbers[1];
  const double step = numbers[2];
  if (step == 0 || (to - from) / step < 0)
    diagnostics::fail(option + ": no step of " + parts[2] + " leads from " + parts[0] + " to " +
                      parts[1]);
  // The end is met even if the quotient falls short of a whole number by round-off.
  const double steps = std::floor((to - from) / step * (1 + 1e-12) + 1e-9);
  if (!(steps < static_cast<double>(kMostPoints)))
    diagnostics::fail(option + ": more than " + std::to_string(kMostPoints) + " points");
  std::vector<std::string> values;
  for (int i = 0; i <= static_cast<int>(steps); ++i)
    values.push_back(twelve_digits(from + i * step));
  return values;
}

// The options that are the sweep's own; each takes a value.
bool is_own(const std::string& word) {
  static const std::set<std::string> names = {"sweep", "jobs", "points", "table", "folder"};
  const std::size_t dashes = word.starts_with("--") ? 2 : 1;
  return word.starts_with("-") && names.contains(word.substr(dashes));
}

bool names_configuration(const std::string& word) {
  return word == "-i" || word == "--i" || word == "-config-file" || word == "--config-file";
}

void read_share(Plan& plan, int argc, char* argv[]) {
  std::string text;
  if (!chCommandLineGet(&text, "points", argc, argv)) return;
  const std::vector<std::string> parts = split(text, '/');
  const auto share = count_of(parts.front());
  const auto shares = count_of(parts.back());
  if (parts.size() != 2 || !share || !shares || *share > *shares)
    diagnostics::fail("--points " + text + ": write K/N, the K-th of N shares, K from 1 to N");
  plan.share = *share;
  plan.shares = *shares;
  if (!chCommandLineGetBool("table", argc, argv))
    diagnostics::fail("--points needs a table of its own for each share; add --table FILE");
}

void read_places(Plan& plan, int argc, char* argv[]) {
  chCommandLineGet(&plan.table, "table", argc, argv);
  const std::filesystem::path table = plan.table;
  plan.folder = (table.parent_path() / table.stem()).string();
  if (plan.folder == plan.table) plan.folder += ".points";
  chCommandLineGet(&plan.folder, "folder", argc, argv);
  if (plan.table.empty() || plan.folder.empty())
    diagnostics::fail("--table and --folder need a name");
}

void require_usable(const Plan& plan) {
  if (plan.axes.size() > kMostAxes)
    diagnostics::fail("--sweep is given " + std::to_string(plan.axes.size()) +
                      " times; three keys can be swept at most");
  std::set<std::string> keys;
  for (const Axis& axis : plan.axes)
    if (!keys.insert(axis.key).second) diagnostics::fail("--sweep names " + axis.key + " twice");
  // At most 1e18: no overflow.
  if (combinations(plan.axes) > kMostPoints)
    diagnostics::fail("the sweep has " + std::to_string(combinations(plan.axes)) +
                      " points; more than " + std::to_string(kMostPoints) + " are refused");
  std::size_t longest = plan.axes.size();
  for (const Axis& axis : plan.axes) {
    std::size_t length = 0;
    for (const std::string& value : axis.values)
      length = std::max(length, point_name({axis}, {value}).size());
    longest += length;
  }
  if (longest > kLongestName)
    diagnostics::fail("the swept values are too long to name the points' folders");
}

}  // namespace

Axis read_axis(const std::string& text) {
  const std::string option = "--sweep " + text;
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0)
    diagnostics::fail(option +
                      ": write SECTION.KEY=FROM:TO:STEP or SECTION.KEY=A,B,C, "
                      "for example layer3.z=100:200:10");
  Axis axis{text.substr(0, equals), {}};
  const std::string values = text.substr(equals + 1);
  axis.values = values.find(':') == std::string::npos ? split(values, ',') : range(option, values);
  std::set<std::string> seen;
  for (const std::string& value : axis.values) {
    if (value.empty()) diagnostics::fail(option + ": a value is missing");
    if (!seen.insert(value).second)
      diagnostics::fail(std::string(option).append(": ").append(value).append(" stands twice"));
  }
  return axis;
}

Plan read_plan(int argc, char* argv[]) {
  Plan plan;
  plan.is_quiet =
      chCommandLineGetBool("q", argc, argv) || chCommandLineGetBool("quiet", argc, argv);
  plan.command.emplace_back(argv[0]);
  if (ranks::launched() > 1) plan.command.emplace_back("--independent");  // in folders of their own
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const bool has_value = i + 1 < argc;
    if (word == "--retry-failed" || word == "-retry-failed") {
      plan.retries_failed = true;
      continue;
    }
    if (is_own(word)) {
      if (!has_value)
        diagnostics::fail(std::string("option ")
                              .append(word)
                              .append(" ends the command line without its value; write ")
                              .append(word)
                              .append(" VALUE"));
      if (word.ends_with("-sweep")) plan.axes.push_back(read_axis(argv[i + 1]));
      ++i;
      continue;
    }
    plan.command.push_back(word);
    if (!has_value) continue;
    // The points run in folders of their own.
    if (names_configuration(word))
      plan.command.push_back(std::filesystem::absolute(argv[++i]).string());
    if (word == "--set" || word == "-set")
      plan.overrides.push_back(plan.command.emplace_back(argv[++i]));
  }
  std::string name;
  chCommandLineGet(&name, "i", argc, argv);
  chCommandLineGet(&name, "config-file", argc, argv);
  if (!name.empty()) plan.configuration = std::filesystem::absolute(name).string();
  std::string jobs = "1";
  chCommandLineGet(&jobs, "jobs", argc, argv);
  if (!count_of(jobs)) diagnostics::fail("--jobs " + jobs + ": write a whole number, 1 or more");
  plan.jobs = *count_of(jobs);
  read_places(plan, argc, argv);
  read_share(plan, argc, argv);
  require_usable(plan);
  return plan;
}

std::int64_t combinations(const std::vector<Axis>& axes) {
  std::int64_t count = 1;
  for (const Axis& axis : axes) count *= static_cast<std::int64_t>(axis.values.size());
  return count;
}

std::vector<std::string> combination(const std::vector<Axis>& axes, std::int64_t index) {
  std::vector<std::string> values(axes.size());
  for (std::size_t a = axes.size(); a-- > 0;) {
    const auto count = static_cast<std::int64_t>(axes[a].values.size());
    values[a] = axes[a].values[static_cast<std::size_t>(index % count)];
    index /= count;
  }
  return values;
}

std::string point_name(const std::vector<Axis>& axes, const std::vector<std::string>& values) {
  std::string name;
  for (std::size_t a = 0; a < axes.size(); ++a) {
    if (a > 0) name += ',';
    for (const char c : axes[a].key + "=" + values[a]) {
      if (c == '/')
        name += "%2F";
      else if (c == '%')
        name += "%25";
      else
        name += c;
    }
  }
  return name;
}

}  // namespace sweep
