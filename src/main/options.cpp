#include "main/options.h"

#include <cmath>
#include <cstring>
#include <thread>

#include "chCommandLine.h"
#include "diagnostics.h"
#include "main/option_table.h"
#include "system/numbers.h"
#include "system/suggest.h"

namespace {

// Reads values by the readers of inc, but for one that is missing.
class Reader {
 public:
  Reader(int argc, char* argv[], std::string& dangling)
      : argc_(argc), argv_(argv), dangling_(dangling) {}

  [[nodiscard]] bool has(const char* short_form, const char* long_form) const {
    return has(short_form) || has(long_form);
  }
  [[nodiscard]] bool has(const char* keyword) const {
    return chCommandLineGetBool(keyword, argc_, argv_);
  }

  // The long form is read last so that it wins.
  template <typename T>
  void read(T* value, const char* short_form, const char* long_form) const {
    read(value, short_form);
    read(value, long_form);
  }
  template <typename T>
  bool read(T* value, const char* keyword) const {
    if (!ends_without_value(keyword)) return chCommandLineGet(value, keyword, argc_, argv_);
    dangling_ = argv_[argc_ - 1];
    return chCommandLineGet(value, keyword, argc_ - 1, argv_);
  }

  // Every value of an option that may stand several times.
  [[nodiscard]] std::vector<std::string> all(const char* keyword) const {
    std::vector<std::string> values;
    for (int i = 1; i < argc_; ++i)
      if (is_option(argv_[i], keyword) && ++i < argc_) values.emplace_back(argv_[i]);
    return values;
  }

 private:
  [[nodiscard]] bool ends_without_value(const char* keyword) const {
    for (int i = 1; i < argc_; ++i)
      if (is_option(argv_[i], keyword) && ++i >= argc_) return true;
    return false;
  }

  int argc_;
  char** argv_;
  std::string& dangling_;
};

// A whole number of our own options: all of the text, within its range.
int whole_number(const std::string& option, const std::string& text, int low, int high,
                 const char* meaning) {
  int value = 0;
  const Range range = {static_cast<double>(low), static_cast<double>(high), false, meaning};
  if (read_whole_within(text, range, value).kind != Reading::kRead)
    diagnostics::fail("--" + option + " " + text + ": write " + meaning + ", a whole number from " +
                      std::to_string(low) + " to " + std::to_string(high));
  return value;
}

double number(const std::string& option, const std::string& text, double low, double high,
              const char* meaning) {
  double value = 0;
  if (read_real_within(text, {low, high, false, meaning}, value).kind != Reading::kRead)
    diagnostics::fail("--" + option + " " + text + ": write " + meaning);
  return value;
}

// Options nobody asks for are nobody's concern when they are read; the user hears of them here.
void warn_of_unknown(int argc, char* argv[]) {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const OptionName* option = find_option(word);
    if (option != nullptr) {
      if (option->takes_value) ++i;
      continue;
    }
    if (word == "-" || word == "--") continue;
    if (word.empty() || word[0] != '-') {
      diagnostics::warn(quoted(word) +
                        " is no option and is ignored; a configuration is named with "
                        "-i FILE");
      continue;
    }
    const std::string name = word.substr(0, word.find('='));
    if (name != word && find_option(name) != nullptr) {
      diagnostics::warn("option " + quoted(word) + " is ignored; write " + name + " " +
                        word.substr(name.size() + 1));
      continue;
    }
    diagnostics::warn("unknown option " + quoted(word) + " is ignored" + option_suggestion(name));
  }
}

void warn_of_useless(const Options& options, const Reader& reader) {
  if (options.is_compare && !options.is_gpu)
    diagnostics::warn("-c compares with the device; nothing is compared without -g");
  if (options.is_gpu && options.kernel != 0 && options.kernel != 1)
    diagnostics::warn("-k " + std::to_string(options.kernel) +
                      ": there is no such kernel; nothing is propagated on the device, and its "
                      "files hold the incident field");
  if (!options.is_gpu && (reader.has("k", "kernel") || reader.has("b", "block-size")))
    diagnostics::warn("-k and -b are for the device; they do nothing without -g");
}

}  // namespace

bool is_option(const char* word, const char* keyword) {
  if (word[0] != '-') return false;
  ++word;
  if (word[0] == '-') ++word;
  return std::strcmp(word, keyword) == 0;
}

Options::Options(int argc, char* argv[]) {
  const Reader reader(argc, argv, dangling_);
  program = argc > 0 ? argv[0] : "zerith";
  for (int i = 1; i < argc; ++i) (text += i > 1 ? " " : "") += argv[i];

  is_quiet = reader.has("q", "quiet");
  reader.read(&config_file, "i", "config-file");
  is_store = reader.has("r", "store-results");
  is_cpu = reader.has("p", "run-cpu");
  is_gpu = reader.has("g", "run-gpu");
  is_compare = reader.has("c", "compare");
  reader.read(&record, "r", "store-results");
  int p_int = -1;
  reader.read(&p_int, "x", "cross-section");
  p = p_int == 1 ? XZ : p_int == 2 ? YZ : DEFAULT_PLANE;
  reader.read(&layer, "l", "layer");
  int value = -1;
  reader.read(&value, "k", "kernel");
  if (value != -1) kernel = value;
  value = -1;
  reader.read(&value, "b", "block-size");
  if (value != -1) blockSize = value;

  is_fast = reader.has("fast");
  is_stream = reader.has("stream");
  is_strict = reader.has("strict");
  is_check = reader.has("check");
  std::string given;
  if (reader.read(&given, "threads"))
    threads = whole_number("threads", given, 0, 1024, "the number of threads, 0 for all cores");
  if (reader.read(&given, "tolerance"))
    tolerance = number("tolerance", given, 0.0, 0.1, "a relative error of the field, such as 1e-6");
  if (reader.read(&given, "progress")) {
    if (given != "plain") diagnostics::fail("--progress " + given + ": write --progress plain");
    is_plain_progress = true;
  }
  reader.read(&field_file, "field");
  reader.read(&checkpoint, "checkpoint");
  if (reader.read(&given, "checkpoint-every"))
    checkpoint_seconds = number("checkpoint-every", given, 0.0, 1e9, "a number of seconds");
  overrides = reader.all("set");
  for (const char* own :
       {"threads", "tolerance", "progress", "field", "checkpoint", "checkpoint-every", "set"})
    require_value(own, own);

  warn_of_unknown(argc, argv);
  warn_of_useless(*this, reader);
  if (dangling_ == "-r" || dangling_ == "--r" || dangling_ == "-store-results" ||
      dangling_ == "--store-results")
    diagnostics::warn("option " + dangling_ +
                      " ends the command line without a file name; the run ends with an error when "
                      "its row is due; write " +
                      dangling_ + " FILE");
}

void Options::require_value(const char* short_form, const char* long_form) const {
  if (dangling_.empty() ||
      !(is_option(dangling_.c_str(), short_form) || is_option(dangling_.c_str(), long_form)))
    return;
  diagnostics::fail("option " + dangling_ + " ends the command line without its value; write " +
                    dangling_ + " VALUE");
}

int all_cores() {
  return static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

int threads_of(const Options& options) {
  const int asked = options.threads.value_or(options.is_fast ? 0 : 1);
  if (asked > 0) return asked;
  return all_cores();
}
