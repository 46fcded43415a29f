// The device copies of a run's arrays, and the staging between the two formats.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include "main/run.h"

// Device memory that goes with the object. An allocation that fails leaves null and its status.
template <typename T>
class DeviceArray {
 public:
  explicit DeviceArray(std::size_t count)
      : status_(cudaMalloc(reinterpret_cast<void**>(&data_), count * sizeof(T))) {}
  ~DeviceArray() { cudaFree(data_); }
  DeviceArray(const DeviceArray&) = delete;
  DeviceArray& operator=(const DeviceArray&) = delete;

  [[nodiscard]] T* data() const { return data_; }
  [[nodiscard]] cudaError_t status() const { return status_; }

  void upload(const T* host, std::size_t count) const {
    cudaMemcpy(data_, host, count * sizeof(T), cudaMemcpyHostToDevice);
  }
  void download(T* host, std::size_t count) const {
    cudaMemcpy(host, data_, count * sizeof(T), cudaMemcpyDeviceToHost);
  }

 private:
  T* data_ = nullptr;
  cudaError_t status_;
};

// Host copies in the device's format.
struct HostCopies {
  HostArray<cufftDoubleComplex> N, KX, KY;  // E is the run's h_E: it brings the result back
};

// Fills run.h_E, which is allocated, and makes the others.
HostCopies converted(Run& run);

struct DeviceArrays {
  // Allocates all; what could not be had is reported on the log, quiet or not, and ends the process
  // with exit(-1).
  explicit DeviceArrays(const Grid& grid);

  void upload(const Run& run, const HostCopies& copies) const;
  void download(Run& run) const;

  // In the order in which they are allocated.
  DeviceArray<cufftDoubleComplex> E;
  DeviceArray<double> F, X, Y;
  DeviceArray<cufftDoubleComplex> N, KX, KY;
};
