// Tests on the device, by the runtime's calls alone: a GPU or the stand-in.
#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <complex>
#include <type_traits>
#include <vector>

using cpx = std::complex<double>;

class DeviceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    void* probe = nullptr;
    if (cudaMalloc(&probe, 1) != cudaSuccess) GTEST_SKIP() << "no device";
    cudaFree(probe);
  }
};

template <class T>
class DeviceArray {
 public:
  explicit DeviceArray(const std::vector<T>& host) : size_(host.size()) {
    EXPECT_EQ(cudaMalloc(&data_, bytes()), cudaSuccess);
    EXPECT_EQ(cudaMemcpy(data_, host.data(), bytes(), cudaMemcpyHostToDevice), cudaSuccess);
  }
  explicit DeviceArray(std::size_t size) : DeviceArray(std::vector<T>(size)) {}
  ~DeviceArray() { cudaFree(data_); }
  DeviceArray(const DeviceArray&) = delete;
  DeviceArray& operator=(const DeviceArray&) = delete;

  // The device's complex numbers are pairs.
  using Element =
      std::conditional_t<std::is_same_v<T, cpx>, double2,
                         std::conditional_t<std::is_same_v<T, std::complex<float>>, float2, T>>;
  operator Element*() const { return data_; }
  std::vector<T> download() const {
    std::vector<T> host(size_);
    EXPECT_EQ(cudaMemcpy(host.data(), data_, bytes(), cudaMemcpyDeviceToHost), cudaSuccess);
    return host;
  }

 private:
  std::size_t bytes() const { return size_ * sizeof(T); }
  std::size_t size_;
  Element* data_ = nullptr;
};
