// What is said of a failure that would otherwise pass unseen.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

namespace device {

// The failures of one call: the first is told to the listener, what follows from it isn't.
class Report {
 public:
  // Whether the call went well. doing completes "the device could not ...".
  bool is_good(cudaError_t status, const char* doing);
  bool is_good(cufftResult status, const char* doing);

 private:
  void say(const char* doing, const char* why);

  bool has_spoken_ = false;
};

}  // namespace device
