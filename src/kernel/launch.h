// The one place that knows which compiler reads the device code: nvcc for a GPU, or the host's for
// the stand-in.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <type_traits>

#ifndef __CUDACC__
#include <standin.h>

#include <atomic>
#endif

namespace device {

#ifdef __CUDACC__

inline constexpr bool kIsHostStandin = false;

// Launches kernel on the default stream. Returns the status of the configuration; a failed one
// launches nothing and stays for cudaGetLastError().
template <class... Parameters>
cudaError_t launch(void (*kernel)(Parameters...), dim3 grid, dim3 block, std::size_t shared_bytes,
                   std::type_identity_t<Parameters>... arguments) {
  void* addresses[] = {&arguments...};
  return cudaLaunchKernel(kernel, grid, block, addresses, shared_bytes, nullptr);
}

// Stores a value that any number of threads store alike: a plain store of a word is whole.
__device__ inline void store_from_any(int* word, int value) {
  *word = value;
}

// The dynamic shared memory of the thread's block, as an array of T.
template <class T>
__device__ T* dynamic_shared_memory() {
  extern __shared__ double2 block_memory[];
  return reinterpret_cast<T*>(block_memory);
}

#else

inline constexpr bool kIsHostStandin = true;

using standin::launch;

inline void store_from_any(int* word, int value) {
  std::atomic_ref<int>(*word).store(value, std::memory_order_relaxed);
}

template <class T>
T* dynamic_shared_memory() {
  return static_cast<T*>(standin::dynamic_shared_memory());
}

#endif

}  // namespace device
