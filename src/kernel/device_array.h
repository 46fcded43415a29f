// An array on the device that lives as long as the object.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>

namespace device {

template <class T>
class Array {
 public:
  Array() = default;
  ~Array() { cudaFree(data_); }
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;

  // Room for count elements, of no particular value; what it had is gone.
  cudaError_t allocate(std::size_t count) {
    cudaFree(data_);
    data_ = nullptr;
    size_ = 0;
    const cudaError_t status = cudaMalloc(reinterpret_cast<void**>(&data_), count * sizeof(T));
    if (status == cudaSuccess) size_ = count;
    return status;
  }
  cudaError_t clear() { return cudaMemset(data_, 0, size_ * sizeof(T)); }
  // Waits for what has been launched.
  cudaError_t upload(const T* host, std::size_t count) {
    return cudaMemcpy(data_, host, count * sizeof(T), cudaMemcpyHostToDevice);
  }
  cudaError_t download(T* host) const {
    return cudaMemcpy(host, data_, size_ * sizeof(T), cudaMemcpyDeviceToHost);
  }

  [[nodiscard]] T* data() const { return data_; }
  [[nodiscard]] std::size_t size() const { return size_; }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace device
