#include "wpm/threads.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace wpm {
namespace {

// What a thread must have to do for its waking to pay.
constexpr double kWorthAThread = 15e3;  // ns

// How often a thread looks before it sleeps: a fifth of a millisecond, longer than a thread that is
// at work within a step leaves the others waiting.
constexpr int kLooks = 10000;

// Whether this thread is within a task, or never does anything else.
thread_local bool is_inside = false;

struct Inside {
  Inside() = default;
  ~Inside() { is_inside = before; }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
  const bool before = std::exchange(is_inside, true);
};

void pause_briefly() {
#if defined(__x86_64__)
  __builtin_ia32_pause();
#endif
}

// Helpers sleep on a number that each job raises. The tasks of a job are dealt out in equal runs,
// so that from job to job a thread finds in its own cache what it left there; each takes its own
// from the front, one at a time, and then what the others have left from the back. A run is one
// word that holds the job's number beside its bounds: a helper that wakes late claims nothing of a
// job that has ended, and nothing of the next with what it read of the last.
class Team {
 public:
  // Of fewer helpers where the system grants no more.
  explicit Team(int helpers) : runs_(static_cast<std::size_t>(helpers) + 1) {
    try {
      for (int h = 1; h <= helpers; ++h) helpers_.emplace_back([this, h] { help(h); });
    } catch (const std::system_error&) {
    }
  }
  ~Team() {
    is_over_ = true;
    job_.fetch_add(1);
    job_.notify_all();
    for (std::thread& helper : helpers_) helper.join();
  }
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;

  void run(int count, int wanted, detail::Call call, void* context) {
    const int helpers = std::min(wanted, static_cast<int>(helpers_.size()));
    const std::uint32_t job = job_.load() + 1;
    // All runs of the job before are used up, so nobody can claim anything while this is laid out.
    step_ = (count - 1) / kMostParts + 1;
    count_ = count;
    call_ = call;
    context_ = context;
    workers_ = helpers + 1;
    done_ = 0;
    const int parts = (count - 1) / step_ + 1;
    for (int worker = 0; worker <= helpers; ++worker)
      runs_[at(worker)].word = word_of(job, parts * std::int64_t{worker} / (helpers + 1),
                                       parts * std::int64_t{worker + 1} / (helpers + 1));
    job_ = job;
    if (sleepers_.load() > 0) job_.notify_all();
    work(0);
    for (int look = 0; look < kLooks && done_.load() != parts; ++look) pause_briefly();
    for (int done = done_.load(); done != parts; done = done_.load()) done_.wait(done);
    if (!has_failed_.test()) return;
    has_failed_.clear();
    std::rethrow_exception(std::exchange(failure_, nullptr));
  }

 private:
  // Begin and end of what is left of a run, behind the job's number.
  static constexpr int kMostParts = 0xffff;
  static std::uint64_t word_of(std::uint32_t job, std::int64_t begin, std::int64_t end) {
    return std::uint64_t{job} << 32U | static_cast<std::uint64_t>(begin) << 16U |
           static_cast<std::uint64_t>(end);
  }
  struct alignas(64) Run {  // in a cache line of its own
    std::atomic<std::uint64_t> word{0};
  };
  static std::size_t at(int worker) { return static_cast<std::size_t>(worker); }

  void help(int worker) {
    is_inside = true;
    std::uint32_t last = 0;
    while (true) {
      for (int look = 0; look < kLooks && job_.load() == last; ++look) pause_briefly();
      ++sleepers_;
      job_.wait(last);
      --sleepers_;
      // In this order: whoever sees the number of the last call also sees that it is the last.
      last = job_.load();
      if (is_over_) return;
      if (worker < workers_.load()) work(worker);
    }
  }

  void work(int worker) {
    const int workers = workers_.load();
    int done = take(worker, worker, true);
    for (int other = 1; other < workers; ++other)
      done += take((worker + other) % workers, worker, false);
    // Once for all: a number that all threads raise is far from each.
    if (done == 0) return;
    done_.fetch_add(done);
    if (worker > 0) done_.notify_one();
  }

  // Does what it can get of a run, from its front or its back. Returns how many parts that were.
  int take(int owner, int worker, bool from_front) {
    std::atomic<std::uint64_t>& run = runs_[at(owner)].word;
    int taken = 0;
    while (true) {
      std::uint64_t word = run.load();
      const auto begin = static_cast<int>(word >> 16U & kMostParts);
      const auto end = static_cast<int>(word & kMostParts);
      if (begin >= end) return taken;
      const detail::Call call = call_.load();
      void* const context = context_.load();
      const int step = step_.load();
      const int count = count_.load();
      if (!run.compare_exchange_strong(word, from_front ? word + (1U << 16U) : word - 1)) continue;
      const int part = from_front ? begin : end - 1;
      try {
        for (int index = part * step; index < count && index < (part + 1) * step; ++index)
          call(context, index, worker);
      } catch (...) {  // goes to the caller, after all parts
        if (!has_failed_.test_and_set()) failure_ = std::current_exception();
      }
      ++taken;
    }
  }

  std::atomic<std::uint32_t> job_{0};
  std::atomic<int> sleepers_{0};
  std::vector<Run> runs_;
  std::atomic<int> done_{0}, count_{0}, step_{1}, workers_{0};
  std::atomic<detail::Call> call_{nullptr};
  std::atomic<void*> context_{nullptr};
  std::atomic<bool> is_over_{false};
  std::atomic_flag has_failed_;
  std::exception_ptr failure_;  // the first of a job
  std::vector<std::thread> helpers_;
};

int thread_count = 1;
int thread_limit = std::numeric_limits<int>::max();

}  // namespace

ThreadLimit::ThreadLimit(int count)
    : before_(std::exchange(thread_limit, std::min(thread_limit, std::max(1, count)))) {}
ThreadLimit::~ThreadLimit() {
  thread_limit = before_;
}

void set_threads(int count) {
  thread_count = std::max(1, count);
}

int threads() {
  return thread_count;
}

namespace detail {

void share_out(int count, double nanoseconds, Call call, void* context) {
  const double wanted = std::min<double>(
      {nanoseconds / kWorthAThread, 1.0 * std::min(thread_count, thread_limit), 1.0 * count});
  const int helpers = is_inside ? 0 : static_cast<int>(wanted) - 1;
  if (helpers < 1) {
    const Inside inside;
    for (int index = 0; index < count; ++index) call(context, index, 0);
    return;
  }
  static int team_size = 0;
  static std::unique_ptr<Team> team;
  if (team_size != thread_count - 1) {  // a larger one has workers beyond the number promised
    team_size = thread_count - 1;
    team.reset();
    team = std::make_unique<Team>(team_size);
  }
  const Inside inside;
  team->run(count, helpers, call, context);
}

}  // namespace detail
}  // namespace wpm
