#include "wpm/threads.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace wpm {
namespace {

// What a thread must have to do for its waking to pay.
constexpr double kWorthAThread = 15e3;  // ns

// How often a thread looks before it sleeps. Short: on a busy machine the core has other work.
constexpr int kLooks = 2000;

// Whether this thread is within a task, or never does anything else.
thread_local bool is_inside = false;

void pause_briefly() {
#if defined(__x86_64__)
  __builtin_ia32_pause();
#endif
}

// Helpers sleep on a number that each job raises, and claim the job's tasks one by one through one
// word that holds the job's number and the next task: a helper that wakes late claims nothing of a
// job that has ended, and nothing of the next with what it read of the last.
class Team {
 public:
  explicit Team(int helpers) {
    for (int h = 1; h <= helpers; ++h) helpers_.emplace_back([this, h] { help(h); });
  }
  ~Team() {
    is_over_ = true;
    job_.fetch_add(1);
    job_.notify_all();
    for (std::thread& helper : helpers_) helper.join();
  }
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;

  void run(int count, int helpers, detail::Call call, void* context) {
    const std::uint32_t job = job_.load() + 1;
    // Closed while the job is laid out: a late helper that still holds the last word of the one
    // before would otherwise claim a task of this one with it.
    claim_ = std::uint64_t{job} << 32U | kClosed;
    count_ = count;
    call_ = call;
    context_ = context;
    wanted_ = helpers;
    done_ = 0;
    claim_ = std::uint64_t{job} << 32U;
    job_ = job;
    if (sleepers_.load() > 0) job_.notify_all();
    work(0);
    for (int look = 0; look < kLooks && done_.load() != count; ++look) pause_briefly();
    for (int done = done_.load(); done != count; done = done_.load()) done_.wait(done);
  }

 private:
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
      if (worker <= wanted_.load()) work(worker);
    }
  }

  void work(int worker) {
    while (true) {
      std::uint64_t claim = claim_.load();
      const std::uint64_t next = claim & kClosed;
      const int count = count_.load();
      const detail::Call call = call_.load();
      void* const context = context_.load();
      if (next >= static_cast<std::uint64_t>(count)) return;
      const auto index = static_cast<int>(next);
      if (!claim_.compare_exchange_strong(claim, claim + 1)) continue;
      call(context, index, worker);
      if (done_.fetch_add(1) + 1 == count && worker > 0) done_.notify_one();
    }
  }

  static constexpr std::uint64_t kClosed = 0xffffffffU;  // behind every task

  std::atomic<std::uint32_t> job_{0};
  std::atomic<std::uint64_t> claim_{0};
  std::atomic<int> count_{0}, done_{0}, wanted_{0}, sleepers_{0};
  std::atomic<detail::Call> call_{nullptr};
  std::atomic<void*> context_{nullptr};
  std::atomic<bool> is_over_{false};
  std::vector<std::thread> helpers_;
};

int thread_count = 1;

}  // namespace

void set_threads(int count) {
  thread_count = std::max(1, count);
}

int threads() {
  return thread_count;
}

namespace detail {

void share_out(int count, double nanoseconds, Call call, void* context) {
  const double wanted =
      std::min<double>({nanoseconds / kWorthAThread, 1.0 * thread_count, 1.0 * count});
  const int helpers = is_inside ? 0 : static_cast<int>(wanted) - 1;
  if (helpers < 1) {
    const bool was_inside = std::exchange(is_inside, true);
    for (int index = 0; index < count; ++index) call(context, index, 0);
    is_inside = was_inside;
    return;
  }
  static int team_size = 0;
  static std::unique_ptr<Team> team;
  if (team_size != thread_count - 1) {  // a larger one has workers beyond the number promised
    team_size = thread_count - 1;
    team.reset();
    team = std::make_unique<Team>(team_size);
  }
  is_inside = true;
  team->run(count, helpers, call, context);
  is_inside = false;
}

}  // namespace detail
}  // namespace wpm
