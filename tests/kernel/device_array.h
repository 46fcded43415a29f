// Device memory for tests, moved by the runtime's own calls so that the tests run on a GPU too.
#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <vector>

template <class T>
class DeviceArray {
 public:
  explicit DeviceArray(const std::vector<T>& host) : size_(host.size()) {
    EXPECT_EQ(cudaMalloc(&data_, bytes()), cudaSuccess);
    EXPECT_EQ(cudaMemcpy(data_, host.data(), bytes(), cudaMemcpyHostToDevice), cudaSuccess);
  }
  ~DeviceArray() { cudaFree(data_); }
  DeviceArray(const DeviceArray&) = delete;
  DeviceArray& operator=(const DeviceArray&) = delete;

  operator T*() const { return data_; }
  std::vector<T> download() const {
    std::vector<T> host(size_);
    EXPECT_EQ(cudaMemcpy(host.data(), data_, bytes(), cudaMemcpyDeviceToHost), cudaSuccess);
    return host;
  }

 private:
  std::size_t bytes() const { return size_ * sizeof(T); }
  std::size_t size_;
  T* data_ = nullptr;
};
