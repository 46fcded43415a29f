// The stand-in device's inside: one lock, the table of allocations, the errors.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

#include "cuda_runtime.h"
#include "standin.h"

namespace standin {

// Guard page, slack, data, guard page: the data ends as near to the second guard page as its
// alignment allows.
struct Allocation {
  std::byte* pages;    // the mapping, guards included
  std::size_t mapped;  // bytes of it
  std::byte* data;
  std::size_t size;  // bytes asked for

  void protect(bool is_open) const;
};

class Memory {
 public:
  Memory();
  void* allocate(std::size_t bytes);  // null if there is no more
  bool release(const void* pointer);
  const Allocation* find(const void* pointer) const;  // what pointer lies in, or null
  // What [pointer, pointer + bytes) lies in, or null.
  const Allocation* find(const void* pointer, std::size_t bytes) const;
  void set_limit(std::size_t bytes) { limit_ = bytes; }

 private:
  std::map<std::uintptr_t, Allocation> allocations_;  // by address of the data
  std::size_t limit_;
  std::size_t used_ = 0;
};

class Errors {
 public:
  // Keeps status for cudaGetLastError unless it is success. A pending fault takes its place.
  cudaError_t record(cudaError_t status);
  void fault(cudaError_t status) { fault_ = status; }
  bool is_faulted() const { return fault_ != cudaSuccess; }
  cudaError_t take();

 private:
  cudaError_t last_ = cudaSuccess;
  cudaError_t fault_ = cudaSuccess;
};

// What has been asked, and what is to fail.
class Calls {
 public:
  // Counts a call; false if it is the one that is to fail.
  bool take(Call call);
  [[nodiscard]] int count(Call call) const { return counts_[static_cast<std::size_t>(call)]; }
  void count_anew() { counts_ = {}; }
  void fail(Call call, int n) { failing_ = call, left_ = n; }

 private:
  std::array<int, kCalls> counts_{};
  Call failing_ = Call::kAllocation;
  int left_ = 0;
};

struct Device {
  std::mutex mutex;  // held by every call from its beginning to its end
  Calls calls;
  Memory memory;
  Errors errors;
};

Device& device();

// Opens the allocations that pointers lie in for as long as it lives.
class Access {
 public:
  Access(const Memory& memory, const std::vector<const void*>& pointers);
  ~Access();
  Access(const Access&) = delete;
  Access& operator=(const Access&) = delete;
  bool is_granted() const { return is_granted_; }  // false: a pointer is not the device's

 private:
  std::vector<const Allocation*> opened_;
  bool is_granted_ = true;
};

// A use of the stand-in that has no counterpart in CUDA's errors: says why and aborts.
[[noreturn]] void misuse(const char* what);

}  // namespace standin
