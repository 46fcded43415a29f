// The fixture of tests that run on the device.
#pragma once

#include "device_array.h"
#include "kernel/kernel.h"

// Skips where a CUDA build finds no device to run on.
class DeviceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    void* probe = nullptr;
    const cudaError_t status = cudaMalloc(&probe, 1);
    cudaFree(probe);
    cudaGetLastError();
    if (status == cudaSuccess) return;
    ASSERT_FALSE(is_host_standin()) << cudaGetErrorString(status);
    GTEST_SKIP() << "no device: " << cudaGetErrorString(status);
  }
};
