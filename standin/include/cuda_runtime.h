// The CUDA runtime as far as our device code and its callers use it; standin.h says what of it is
// different here.
#pragma once

#include <cstddef>

// NOLINTBEGIN(bugprone-reserved-identifier): the language extensions have these names.
#define __global__
#define __device__
#define __launch_bounds__(...)  // of registers there are enough
// NOLINTEND(bugprone-reserved-identifier)

struct alignas(16) double2 {
  double x, y;
};

struct alignas(8) float2 {
  float x, y;
};

struct uint3 {
  unsigned x, y, z;
};

struct dim3 {
  constexpr dim3(unsigned x_ = 1, unsigned y_ = 1, unsigned z_ = 1) : x(x_), y(y_), z(z_) {}
  unsigned x, y, z;
};

// Where the running kernel's thread stands. Meaningless outside a kernel.
extern constinit thread_local uint3 threadIdx;
extern constinit thread_local uint3 blockIdx;
extern constinit thread_local dim3 blockDim;
extern constinit thread_local dim3 gridDim;

// The block's barrier. Threads that have left the kernel are not waited for. Ends the process in a
// kernel that was launched without dynamic shared memory.
void __syncthreads();  // NOLINT(bugprone-reserved-identifier)

enum cudaError {
  cudaSuccess = 0,
  cudaErrorInvalidValue = 1,
  cudaErrorMemoryAllocation = 2,
  cudaErrorInvalidConfiguration = 9,
  cudaErrorIllegalAddress = 700,
  cudaErrorLaunchOutOfResources = 701,
  cudaErrorUnknown = 999
};
typedef enum cudaError cudaError_t;

enum cudaMemcpyKind {
  cudaMemcpyHostToHost = 0,
  cudaMemcpyHostToDevice = 1,
  cudaMemcpyDeviceToHost = 2,
  cudaMemcpyDeviceToDevice = 3
};

// Gives bytes of device memory, all zero. 2 and a null pointer if the device has no more; success
// and a null pointer for 0 bytes.
cudaError_t cudaMalloc(void** pointer, std::size_t bytes);

template <class T>
cudaError_t cudaMalloc(T** pointer, std::size_t bytes) {
  void* memory = nullptr;
  const cudaError_t status = cudaMalloc(&memory, bytes);
  *pointer = static_cast<T*>(memory);
  return status;
}

// Null is released without effect; 1 for what cudaMalloc did not give.
cudaError_t cudaFree(void* pointer);

// 1 if a side that kind places on the device is not wholly inside one allocation, or a side that it
// places on the host lies in device memory.
cudaError_t cudaMemcpy(void* target, const void* source, std::size_t bytes, cudaMemcpyKind kind);

// height rows of width bytes, that far apart on either side, as one copy; 1 for rows that overlap.
cudaError_t cudaMemcpy2D(void* target, std::size_t target_pitch, const void* source,
                         std::size_t source_pitch, std::size_t width, std::size_t height,
                         cudaMemcpyKind kind);

// Every byte becomes value's lowest; 1 for what is not wholly inside one allocation.
cudaError_t cudaMemset(void* target, int value, std::size_t bytes);

cudaError_t cudaDeviceSynchronize();

// Marks on the time of the default stream, the only one: a null one. 1 for a null event, or one
// that nothing was recorded for.
struct CUevent_st;
typedef struct CUevent_st* cudaEvent_t;
typedef struct CUstream_st* cudaStream_t;
cudaError_t cudaEventCreate(cudaEvent_t* event);
cudaError_t cudaEventDestroy(cudaEvent_t event);
cudaError_t cudaEventRecord(cudaEvent_t event, cudaStream_t stream = nullptr);
cudaError_t cudaEventSynchronize(cudaEvent_t event);
cudaError_t cudaEventElapsedTime(float* milliseconds, cudaEvent_t begin, cudaEvent_t end);

// The last error of any call, which it forgets: an illegal address before all others.
cudaError_t cudaGetLastError();

const char* cudaGetErrorString(cudaError_t status);
