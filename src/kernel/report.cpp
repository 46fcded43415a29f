#include "kernel/report.h"

#include <iostream>
#include <string>

#include "kernel/kernel.h"

namespace {

DeviceListener listener = [](const char* text) { std::cerr << "zerith: error: " << text << '\n'; };

}  // namespace

void set_device_listener(DeviceListener listener_) {
  listener = listener_;
}

namespace device {

bool Report::is_good(cudaError_t status, const char* doing) {
  if (status == cudaSuccess) return true;
  say(doing, cudaGetErrorString(status));
  return false;
}

bool Report::is_good(cufftResult status, const char* doing) {
  if (status == CUFFT_SUCCESS) return true;
  say(doing, ("cuFFT's status is " + std::to_string(static_cast<int>(status))).c_str());
  return false;
}

void Report::say(const char* doing, const char* why) {
  if (!has_spoken_) listener((std::string("the device could not ") + doing + ": " + why).c_str());
  has_spoken_ = true;
}

}  // namespace device
