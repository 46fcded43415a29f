// A device without a GPU: what our kernels and their callers need of the CUDA runtime and of cuFFT,
// on the host.
//
// It forgives no more than a GPU does:
//   - Device memory is readable and writable only while a copy, a transform or a kernel that was
//     given a pointer into it runs; host code that touches a device pointer faults.
//   - A guard page lies on either side of an allocation. AddressSanitizer also sees the bytes
//     between the last one asked for and the guard page.
//   - A kernel that is given a host pointer, a freed one or null as an argument does not run; the
//     launch leaves error 700, which every later call returns until cudaGetLastError reports it.
//   - Dynamic shared memory is full of NaN when a block begins.
// New device memory reads as zero, and a pointer is a multiple of 256.
//
// Launches, copies and transforms are done when the call returns. The blocks of a launch without
// dynamic shared memory are spread over the OpenMP threads, and the threads of a block run one
// after another. With dynamic shared memory the blocks run one after another, and every thread of a
// block is a thread of the host, so that __syncthreads() is a barrier. Results depend on neither.
//
// The device holds as many bytes as the host has memory, unless a program brings a
// standin::memory_of_device() of its own.
#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <vector>

#include "cuda_runtime.h"

namespace standin {

inline constexpr unsigned kMaxThreadsPerBlock = 1024;
inline constexpr std::size_t kMaxSharedMemory = 48 * 1024;  // bytes a block

// Bytes that the device holds at the start. It stands in a file of its own, so that a program that
// is linked with another has a smaller device.
std::size_t memory_of_device();

// Bytes that may be allocated from now on, those in use counted.
void set_memory_limit(std::size_t bytes);

// What is asked of the device. Clearing memory is a launch.
enum class Call { kAllocation, kPlan, kTransform, kLaunch, kCopy, kSynchronisation };
inline constexpr int kCalls = 6;

// How often it has been asked since counting began anew, refused or not.
int count_of(Call call);
void count_anew();

// The n-th such call from now on fails, once: an allocation or a plan for want of memory, a launch
// for want of registers, a copy, a transform or a synchronisation with what CUDA calls an
// unspecific failure. 0: none does.
void fail_call(Call call, int n);

// Runs body once for every thread of the grid, with threadIdx and the others set.
// Returns 9 for an impossible grid or block; 700 is left pending if one of pointers is no device
// pointer. Without dynamic shared memory body must not reach a barrier.
cudaError_t launch_grid(dim3 grid, dim3 block, std::size_t shared_bytes,
                        const std::vector<const void*>& pointers,
                        const std::function<void()>& body);

// Launches kernel on the default stream with shared_bytes of dynamic shared memory a block. Its
// pointers must be device pointers. Returns the status of the configuration.
template <class... Parameters>
cudaError_t launch(void (*kernel)(Parameters...), dim3 grid, dim3 block, std::size_t shared_bytes,
                   std::type_identity_t<Parameters>... arguments) {
  std::vector<const void*> pointers;
  [[maybe_unused]] const auto collect = [&pointers](const auto& argument) {
    if constexpr (std::is_pointer_v<std::remove_cvref_t<decltype(argument)>>)
      pointers.push_back(argument);
  };
  (collect(arguments), ...);
  return launch_grid(grid, block, shared_bytes, pointers, [&] { kernel(arguments...); });
}

// The dynamic shared memory of the block that the calling thread belongs to.
void* dynamic_shared_memory();

}  // namespace standin
