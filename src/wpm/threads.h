// The threads that sums are shared out to.
#pragma once

#include <type_traits>

namespace wpm {

// How many threads later sums may use, the caller's included: 1 until this is called. The results
// of no sum depend on it.
void set_threads(int count);
int threads();

// While it lives, sums use so many of the threads at most, or fewer where another says so.
class ThreadLimit {
 public:
  explicit ThreadLimit(int count);
  ~ThreadLimit();
  ThreadLimit(const ThreadLimit&) = delete;
  ThreadLimit& operator=(const ThreadLimit&) = delete;

 private:
  int before_;
};

namespace detail {
using Call = void (*)(void* context, int index, int worker);
void share_out(int count, double nanoseconds, Call call, void* context);
}  // namespace detail

// Calls task(index, worker) once for each index in 0..count-1, in any order, and returns when all
// are done; calls at the same time have different workers in 0..threads()-1. Tasks are handed out
// one at a time, so a thread that the system takes off its core holds up no more than one.
// nanoseconds is a guess of all the work: threads join only for what outweighs waking them. The
// caller works too; the first exception of a task reaches the caller after the others end; a call
// from within a task is done by its own thread alone.
template <typename Task>
void share_out(int count, double nanoseconds, Task&& task) {
  detail::share_out(
      count, nanoseconds,
      [](void* context, int index, int worker) {
        (*static_cast<std::remove_reference_t<Task>*>(context))(index, worker);
      },
      const_cast<void*>(static_cast<const void*>(&task)));
}

}  // namespace wpm
