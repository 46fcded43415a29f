// The first failure of a sequence of calls; all calls behind it are left out.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include <optional>

#include "kernel/launch.h"
#include "kernel/slice_stepper.h"

namespace device {

class Status {
 public:
  [[nodiscard]] bool is_good() const { return !failure_; }
  [[nodiscard]] const Failure* failure() const { return failure_ ? &*failure_ : nullptr; }

  // Takes what a call returned; doing completes "the device could not ...".
  void take(cudaError_t status, const char* doing) {
    if (is_good() && status != cudaSuccess)
      failure_ = {static_cast<int>(status),
                  std::string("the device could not ") + doing + ": " + cudaGetErrorString(status)};
  }
  void take(cufftResult status, const char* doing) {
    if (is_good() && status != CUFFT_SUCCESS)
      failure_ = {0, std::string("the device could not ") + doing + ": cuFFT's status is " +
                         std::to_string(static_cast<int>(status))};
  }

  template <class... Parameters>
  void launch(void (*kernel)(Parameters...), dim3 grid, dim3 block,
              std::type_identity_t<Parameters>... arguments) {
    if (is_good()) take(device::launch(kernel, grid, block, 0, arguments...), "launch a step");
  }

  // Room for at least count elements; what an array that is large enough holds stays.
  template <class Array>
  void reserve(Array& array, std::size_t count, const char* doing) {
    if (is_good() && array.size() < count) take(array.allocate(count), doing);
  }

 private:
  std::optional<Failure> failure_;
};

}  // namespace device
