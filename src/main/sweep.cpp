#include "main/sweep.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>

#include "chCommandLine.h"
#include "diagnostics.h"
#include "main/option_table.h"
#include "main/options.h"
#include "main/sweep_plan.h"
#include "main/sweep_point.h"
#include "main/sweep_subject.h"
#include "main/sweep_table.h"
#include "ranks/ranks.h"
#include "wpm/progress.h"

namespace sweep {
namespace {

using std::filesystem::path;

// Signals that the loop takes one by one, and what they were before.
class HeldSignals {
 public:
  HeldSignals() {
    sigemptyset(&held_);
    for (const int signal : {SIGCHLD, SIGINT, SIGTERM, SIGHUP}) sigaddset(&held_, signal);
    sigprocmask(SIG_BLOCK, &held_, &before_);
  }
  ~HeldSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  // The next of them, or 0 after half a second without one.
  [[nodiscard]] int next() const {
    constexpr timespec kHalfASecond = {0, 500'000'000};
    const int signal = sigtimedwait(&held_, nullptr, &kHalfASecond);
    return signal > 0 ? signal : 0;
  }

  [[nodiscard]] const sigset_t& before() const { return before_; }

 private:
  sigset_t held_{};
  sigset_t before_{};
};

class Sweep {
 public:
  explicit Sweep(Plan plan);
  int run();

 private:
  struct Point {
    std::vector<std::string> values;
    path folder;
  };

  void start_next();
  void take_ended();
  void record(const Point& point, int status, const std::string& message = "");
  void end_points(int signal);
  void show_progress() const;
  [[nodiscard]] std::string summary() const;

  Plan plan_;
  Subject subject_;
  std::vector<std::string> keys_;
  Table table_;
  HeldSignals signals_;
  std::vector<std::int64_t> left_;  // combinations still to be started, the last one first
  std::map<pid_t, Point> running_;
  std::size_t to_run_ = 0, held_ = 0, done_ = 0, failed_ = 0, failed_before_ = 0;
  int stopped_by_ = 0;    // a signal
  bool is_lost_ = false;  // the table takes no more rows
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

std::vector<std::string> keys_of(const Plan& plan) {
  std::vector<std::string> keys;
  for (const Axis& axis : plan.axes) keys.push_back(axis.key);
  return keys;
}

Sweep::Sweep(Plan plan)
    : plan_(std::move(plan)), subject_(plan_), keys_(keys_of(plan_)), table_(plan_.table, keys_) {
  std::error_code error;
  std::filesystem::create_directories(plan_.folder, error);
  if (error) diagnostics::fail(plan_.folder + ": cannot be made: " + error.message());
  std::vector<std::vector<std::string>> retried;
  // Shares take turns: neighbours cost about the same.
  for (std::int64_t i = plan_.share - 1; i < combinations(plan_.axes); i += plan_.shares) {
    const std::vector<std::string> values = combination(plan_.axes, i);
    const std::optional<std::string> status = table_.status(values);
    const bool has_failed = status && *status != "0";
    if (has_failed && plan_.retries_failed) retried.push_back(values);
    if (!status || (has_failed && plan_.retries_failed)) {
      left_.push_back(i);
      continue;
    }
    ++held_;
    if (has_failed) ++failed_before_;
  }
  if (!table_.forget(retried))
    diagnostics::fail(plan_.table + ": cannot be written: " + std::strerror(errno));
  to_run_ = left_.size();
  std::reverse(left_.begin(), left_.end());
}

// The transforms that one point has measured serve the others, which are then alike to the bit.
constexpr const char* kWisdom = "wisdom3.txt";

void Sweep::start_next() {
  Point point{combination(plan_.axes, left_.back()), {}};
  left_.pop_back();
  point.folder = path(plan_.folder) / point_name(plan_.axes, point.values);
  std::vector<std::string> words = plan_.command;
  for (std::size_t a = 0; a < keys_.size(); ++a)
    words.insert(words.end(), {"--set", keys_[a] + "=" + point.values[a]});
  const auto is_given = [this](const char* option) {
    return std::any_of(plan_.command.begin(), plan_.command.end(),
                       [&](const std::string& word) { return is_option(word.c_str(), option); });
  };
  // Points that run at the same time share the cores that each would take.
  if (plan_.jobs > 1 && is_given("fast") && !is_given("threads"))
    words.insert(words.end(), {"--threads", std::to_string(std::max(1, all_cores() / plan_.jobs))});

  std::error_code ignored;
  std::filesystem::create_directories(point.folder, ignored);
  std::filesystem::copy_file(path(plan_.folder) / kWisdom, point.folder / kWisdom,
                             std::filesystem::copy_options::skip_existing, ignored);
  const pid_t process = start_point(point.folder, words, signals_.before());
  if (process > 0)
    running_.emplace(process, std::move(point));
  else
    record(point, 127, std::string("no process could be started: ") + std::strerror(errno));
}

void Sweep::take_ended() {
  int wait_status = 0;
  for (pid_t process = 0; (process = waitpid(-1, &wait_status, WNOHANG)) > 0;) {
    const auto ended = running_.extract(process);
    if (ended.empty()) continue;
    const int status = exit_status(wait_status);
    // A point that was stopped is no result: it runs again when the sweep goes on.
    if (stopped_by_ == 0 || status == 0) {
      const path& folder = ended.mapped().folder;
      record(ended.mapped(), status, status == 0 ? "" : last_message(folder, status));
    }
  }
}

void Sweep::record(const Point& point, int status, const std::string& message) {
  ++done_;
  Table::Figures figures;
  if (status == 0) {
    figures = last_rows(point.folder, subject_.tables(point.values));
    std::error_code ignored;
    std::filesystem::copy_file(point.folder / kWisdom, path(plan_.folder) / kWisdom,
                               std::filesystem::copy_options::skip_existing, ignored);
  } else {
    ++failed_;
  }
  if (!is_lost_ && !table_.add(point.values, figures, status, message)) {
    is_lost_ = true;
    diagnostics::error(plan_.table + ": a row could not be written: " + std::strerror(errno) +
                       "; the sweep ends here");
  }
}

// They are asked to end, so that a run with a checkpoint can write it; a second signal of the user
// leaves them no time.
void Sweep::end_points(int signal) {
  const bool is_second = stopped_by_ != 0;
  stopped_by_ = signal;
  left_.clear();
  for (const auto& [process, point] : running_) kill(process, is_second ? SIGKILL : SIGTERM);
}

void Sweep::show_progress() const {
  if (done_ == 0) {
    diagnostics::progress("point 0 of " + std::to_string(to_run_));
    return;
  }
  const double elapsed =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
  const double left = elapsed / static_cast<double>(done_) * static_cast<double>(to_run_ - done_);
  diagnostics::progress("point " + std::to_string(done_) + " of " + std::to_string(to_run_) + ", " +
                        std::to_string(100 * done_ / to_run_) + " %, " + duration_in_words(left) +
                        " left" + (failed_ > 0 ? ", " + std::to_string(failed_) + " failed" : ""));
}

std::string Sweep::summary() const {
  return std::to_string(done_ + held_) + " of " + std::to_string(to_run_ + held_) + " points in " +
         plan_.table + ": " + std::to_string(done_ - failed_) + " run, " + std::to_string(failed_) +
         " failed, " + std::to_string(held_) + " held already";
}

int Sweep::run() {
  while (!left_.empty() || !running_.empty()) {
    while (!left_.empty() && running_.size() < static_cast<std::size_t>(plan_.jobs)) start_next();
    show_progress();
    const int signal = signals_.next();
    if (signal != 0 && signal != SIGCHLD) end_points(signal);
    take_ended();
    if (is_lost_ && stopped_by_ == 0) end_points(SIGTERM);
  }
  diagnostics::progress("");
  if (!plan_.is_quiet) std::cout << summary() << std::endl;
  if (is_lost_) return 255;
  if (stopped_by_ != 0) {
    diagnostics::note("the same command goes on with the points that are missing");
    signal(stopped_by_, SIG_DFL);
    raise(stopped_by_);  // held until the signals are given back
  }
  if (failed_ + failed_before_ == 0) return 0;
  diagnostics::error("failed points: " + std::to_string(failed_ + failed_before_) + ", " +
                     std::to_string(failed_before_) + " of them in an earlier run; " + plan_.table +
                     " has the reasons; --retry-failed runs them again");
  return 1;
}

}  // namespace
}  // namespace sweep

bool is_sweep(int argc, char* argv[]) {
  return chCommandLineGetBool("sweep", argc, argv);
}

int run_sweep(int argc, char* argv[]) {
  if (!chCommandLineGetBool("points", argc, argv))
    ranks::require_alone(
        "each would do the whole sweep: give each process its own points with --points, or start "
        "one process");
  return sweep::Sweep(sweep::read_plan(argc, argv)).run();
}
