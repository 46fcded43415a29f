#include "system/parser.h"

#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

#include "data/dataset.h"
#include "diagnostics.h"
#include "log.h"
#include "system/keys.h"
#include "system/lines.h"
#include "system/suggest.h"

namespace {

template <typename Record>
constexpr bool key_waits_for_kind =
    std::is_same_v<Record, struct_layer> || std::is_same_v<Record, struct_emfield>;

class Parser {
 public:
  Parser(const std::string& filename, Description& d, bool is_quiet)
      : filename_(filename), d_(d), log_(is_quiet) {}

  void read_lines(std::istream& file);

 private:
  void take_line(std::string line);
  void take_tag(const SplitLine& parts);
  void open(section opened, const std::string& tag);
  void close(section closed, const std::string& tag);
  void take_key(const SplitLine& parts);
  void commit();

  template <typename Record>
  void store(std::span<const Key<Record>> keys, const char* tag, Record& record, GivenKeys& given,
             const SplitLine& parts);

  [[nodiscard]] std::string where() const { return data::place(filename_, line_number_) + ": "; }

  const std::string& filename_;
  Description& d_;
  Log log_;
  int line_number_ = 0;
  bool has_windows_lines_ = false;

  // Records that are not complete yet.
  struct_emfield wave_;
  struct_layer layer_;
  Monitor monitor_;
  GivenKeys wave_keys_, layer_keys_, monitor_keys_;

  section opened_ = NONE;  // the section opened last
  section closed_ = NONE;  // the closing tag seen last and not yet matched
};

void Parser::read_lines(std::istream& file) {
  Line line;
  while (read_line(file, line)) {
    ++line_number_;
    if (line.is_windows && !has_windows_lines_) {
      has_windows_lines_ = true;
      diagnostics::warn(where() +
                        "has Windows line ends; a carriage return becomes part of the tag or word "
                        "before it; convert the file to Unix line ends");
    }
    take_line(line.text);
    if (line.is_too_long)
      diagnostics::fail(where() + "the line has " + std::to_string(MAX_CHARS_PER_LINE) +
                        " characters or more, blanks included, and the limit is " +
                        std::to_string(MAX_CHARS_PER_LINE - 1) + "; shorten or break it");
  }
  if (file.bad()) diagnostics::fail(filename_ + ": cannot be read; is it a directory?");
  if (opened_ == MONITOR_S) {
    line_number_ = monitor_.line;
    diagnostics::fail(where() + "[monitor] has no closing tag; write [/monitor] behind it");
  }
  if (opened_ == WAVE_S || opened_ == LAYER_S)
    diagnostics::warn(filename_ + ": the last [" + (opened_ == WAVE_S ? "wave" : "layer") +
                      "] has no closing tag and is ignored");
}

void Parser::take_line(std::string line) {
  removeBlanks(line.data());
  line.resize(std::strlen(line.c_str()));
  if (line.empty()) return;
  const SplitLine parts = split(line);
  if (parts.left.empty())
    diagnostics::fail(where() + "the line has nothing but equals signs; write key = value");
  if (parts.right.empty())
    take_tag(parts);
  else
    take_key(parts);
  commit();
}

// Handles text without a value. Text that matches no tag is a free comment.
void Parser::take_tag(const SplitLine& parts) {
  log_ << "\t\t\t\t" << parts.left << std::endl;
  std::vector<std::string_view> known;
  for (const Tag& tag : tags()) {
    known.push_back(tag.text);
    if (parts.left != tag.text) continue;
    if (tag.opens != NONE) open(tag.opens, parts.left);
    if (tag.closes != NONE) close(tag.closes, parts.left);
    return;
  }
  const bool is_other_method = parts.left == "[/fdtd]" || parts.left == "[/rcwa]";
  if (parts.has_assign && opened_ == MONITOR_S)
    diagnostics::fail(where() + "key " + quoted(parts.left) + " in [monitor] has no value");
  else if (parts.has_assign)
    diagnostics::warn(where() + "key " + quoted(parts.left) + " has no value and is ignored");
  else if (parts.left.front() == '[' && !is_other_method)
    diagnostics::warn(where() + "unknown tag " + quoted(parts.left) + " is ignored" +
                      suggestion(parts.left.substr(0, parts.left.find(']') + 1), known));
}

// An open wave or layer keeps its values until the next tag of its kind. An open monitor is an
// error.
void Parser::open(section opened, const std::string& tag) {
  const bool is_left_open = opened_ == WAVE_S || opened_ == LAYER_S;
  const std::string left = opened_ == WAVE_S ? "[wave]" : "[layer]";
  const int left_line = opened_ == WAVE_S ? wave_.line : layer_.line;
  if (opened_ == MONITOR_S)
    diagnostics::fail(where() + tag + " stands inside the [monitor] of line " +
                      std::to_string(monitor_.line) + "; write [/monitor] before it");
  if (is_left_open && opened == MONITOR_S)
    diagnostics::fail(where() + tag + " stands inside the " + left + " of line " +
                      std::to_string(left_line) + "; close that first");
  if (is_left_open)
    diagnostics::warn(where() + tag + " opens while the " + left + " of line " +
                      std::to_string(left_line) + " is not closed; it goes on at the next " + left);
  opened_ = opened;
  for (const auto& [kind, line] : {std::pair(WAVE_S, &wave_.line), std::pair(LAYER_S, &layer_.line),
                                   std::pair(MONITOR_S, &monitor_.line)})
    if (opened == kind && *line == 0) *line = line_number_;
}

// Stores the tag whatever section is open. A monitor accepts only its own.
void Parser::close(section closed, const std::string& tag) {
  if (opened_ == MONITOR_S && closed != MONITOR_E)
    diagnostics::fail(where() + tag + " stands inside the [monitor] of line " +
                      std::to_string(monitor_.line) + "; write [/monitor] before it");
  if (opened_ != MONITOR_S && closed == MONITOR_E)
    return diagnostics::warn(where() + tag + " closes nothing and is ignored");
  const section opener = closed == GLOBAL_E ? GLOBAL_S : closed == WAVE_E ? WAVE_S : LAYER_S;
  if (closed != MONITOR_E && opened_ != opener)
    diagnostics::warn(where() + tag +
                      " does not close the section that is open; it is kept, and closes the next "
                      "one of its kind at once");
  closed_ = closed;
}

void Parser::take_key(const SplitLine& parts) {
  log_ << "\t\t\t\t\t" << parts.left << " =\t" << parts.right << std::endl;
  switch (opened_) {
    case GLOBAL_S:
      return store(global_keys(), "[global]", d_.so, d_.global_keys, parts);
    case WAVE_S:
      return store(wave_keys(), "[wave]", wave_, wave_keys_, parts);
    case LAYER_S:
      return store(layer_keys(), "[layer]", layer_, layer_keys_, parts);
    case MONITOR_S:
      return store(monitor_keys(), "[monitor]", monitor_, monitor_keys_, parts);
    case NONE:
      diagnostics::warn(where() + "key " + quoted(parts.left) +
                        " stands in no section and is ignored");
      return;
    default:
      return;  // a section of another method
  }
}

// Any mistake in a monitor is an error: nothing else states its intent. A refused value of a layer
// or wave is an error only if its kind uses the key. The kind may follow.
template <typename Record>
void Parser::store(std::span<const Key<Record>> keys, const char* tag, Record& record,
                   GivenKeys& given, const SplitLine& parts) {
  const auto warn = std::is_same_v<Record, Monitor> ? diagnostics::fail : diagnostics::warn;
  for (const Key<Record>& key : keys) {
    if (parts.left != key.name) continue;
    given.push_back({key.name, parts.right, line_number_});
    const Reading reading = key.store(record, parts.right);
    const std::string value = quoted(parts.right) + " of " + quoted(key.name) + " in " + tag;
    if (reading.kind == Reading::kUnknownWord)
      warn(where() + "unknown value " + value +
           suggestion(parts.right, {key.keywords.begin(), key.keywords.end()}));
    if (reading.kind == Reading::kPartly) warn(where() + "value " + value + " " + reading.text);
    if (reading.kind == Reading::kRefused && key_waits_for_kind<Record>)
      given.back().refused = reading.text;
    else if (reading.kind == Reading::kRefused)
      diagnostics::fail(where() + "value " + value + " " + reading.text);
    return;
  }
  warn(where() + "unknown key " + quoted(parts.left) + " in " + tag +
       suggestion(parts.left, names_of(keys)));
}

// A closing tag takes effect when its section is open, possibly lines later.
void Parser::commit() {
  const auto move = [](auto& record, auto& records, GivenKeys& keys, std::vector<GivenKeys>& all) {
    records.push_back(std::exchange(record, {}));
    all.push_back(std::exchange(keys, {}));
  };
  if (opened_ == LAYER_S && closed_ == LAYER_E) {
    d_.by_permittivity.push_back(d_.so.permittivity);
    move(layer_, d_.layers, layer_keys_, d_.layer_keys);
  } else if (opened_ == WAVE_S && closed_ == WAVE_E) {
    move(wave_, d_.waves, wave_keys_, d_.wave_keys);
  } else if (opened_ == MONITOR_S && closed_ == MONITOR_E) {
    move(monitor_, d_.monitors, monitor_keys_, d_.monitor_keys);
  } else if (!(opened_ == GLOBAL_S && closed_ == GLOBAL_E)) {
    return;
  }
  opened_ = NONE;
  closed_ = NONE;
}

}  // namespace

void parse_lines(std::istream& file, const std::string& filename, Description& d, bool is_quiet) {
  Parser(filename, d, is_quiet).read_lines(file);
}
