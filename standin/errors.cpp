#include <cstdio>
#include <cstdlib>

#include "device.h"

namespace standin {

cudaError_t Errors::record(cudaError_t status) {
  if (is_faulted()) return fault_;
  if (status != cudaSuccess) last_ = status;
  return status;
}

cudaError_t Errors::take() {
  const cudaError_t status = is_faulted() ? fault_ : last_;
  last_ = fault_ = cudaSuccess;
  return status;
}

Device& device() {
  static Device the_device;
  return the_device;
}

void misuse(const char* what) {
  std::fprintf(stderr, "stand-in device: %s\n", what);
  std::abort();
}

}  // namespace standin

cudaError_t cudaDeviceSynchronize() {
  standin::Device& device = standin::device();
  const std::lock_guard lock(device.mutex);
  const bool is_good = device.calls.take(standin::Call::kSynchronisation);
  return device.errors.record(is_good ? cudaSuccess : cudaErrorUnknown);
}

cudaError_t cudaGetLastError() {
  standin::Device& device = standin::device();
  const std::lock_guard lock(device.mutex);
  return device.errors.take();
}

const char* cudaGetErrorString(cudaError_t status) {
  switch (status) {
    case cudaSuccess:
      return "no error";
    case cudaErrorInvalidValue:
      return "invalid argument";
    case cudaErrorMemoryAllocation:
      return "out of memory";
    case cudaErrorInvalidConfiguration:
      return "invalid configuration argument";
    case cudaErrorIllegalAddress:
      return "an illegal memory access was encountered";
    case cudaErrorLaunchOutOfResources:
      return "too many resources requested for launch";
    case cudaErrorUnknown:
      return "unknown error";
  }
  return "unrecognized error code";
}
