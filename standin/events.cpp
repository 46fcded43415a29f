// Marks on the device's time, which is the host's: a call is done when it returns.
#include <chrono>
#include <optional>

#include "device.h"

using Clock = std::chrono::steady_clock;

struct CUevent_st {
  std::optional<Clock::time_point> time;
};

namespace {

cudaError_t recorded(bool is_valid) {
  standin::Device& device = standin::device();
  const std::lock_guard lock(device.mutex);
  return device.errors.record(is_valid ? cudaSuccess : cudaErrorInvalidValue);
}

}  // namespace

cudaError_t cudaEventCreate(cudaEvent_t* event) {
  *event = new CUevent_st;
  return recorded(true);
}

cudaError_t cudaEventDestroy(cudaEvent_t event) {
  delete event;
  return recorded(event != nullptr);
}

cudaError_t cudaEventRecord(cudaEvent_t event, cudaStream_t /*stream*/) {
  if (event != nullptr) event->time = Clock::now();
  return recorded(event != nullptr);
}

cudaError_t cudaEventSynchronize(cudaEvent_t event) {
  return recorded(event != nullptr);
}

cudaError_t cudaEventElapsedTime(float* milliseconds, cudaEvent_t begin, cudaEvent_t end) {
  const bool is_known = begin != nullptr && end != nullptr && begin->time && end->time;
  if (is_known)
    *milliseconds = std::chrono::duration<float, std::milli>(*end->time - *begin->time).count();
  return recorded(is_known);
}
