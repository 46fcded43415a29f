// Device memory that forgives no more than a GPU's.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>

#include "device_array.h"
#include "standin.h"

namespace {

using Buffer = DeviceArray<double>;

Buffer zeros(std::size_t count) {
  return Buffer(std::vector<double>(count));
}

void store(double* target, int index) {
  target[index] = 1;
}

TEST(StandinMemory, IsAlignedAndZero) {
  for (const std::size_t count : {std::size_t{1}, std::size_t{33}, std::size_t{5000}}) {
    double* data = nullptr;
    ASSERT_EQ(cudaMalloc(&data, count * 8), cudaSuccess);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 256, 0U);
    std::vector<double> host(count, 1.0);
    ASSERT_EQ(cudaMemcpy(host.data(), data, count * 8, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(host, std::vector<double>(count));
    EXPECT_EQ(cudaFree(data), cudaSuccess);
  }
  double* none = reinterpret_cast<double*>(8);
  EXPECT_EQ(cudaMalloc(&none, 0), cudaSuccess);
  EXPECT_EQ(none, nullptr);
}

TEST(StandinMemory, HoldsNoMoreThanItsLimit) {
  standin::set_memory_limit(1000);
  const Buffer buffer = zeros(100);
  double* more = buffer;
  EXPECT_EQ(cudaMalloc(&more, 201), cudaErrorMemoryAllocation);
  EXPECT_EQ(more, nullptr);
  EXPECT_EQ(cudaGetLastError(), cudaErrorMemoryAllocation);
  EXPECT_EQ(cudaGetLastError(), cudaSuccess);
  EXPECT_EQ(cudaMalloc(&more, 200), cudaSuccess);
  EXPECT_EQ(cudaFree(more), cudaSuccess);
  standin::set_memory_limit(std::numeric_limits<std::size_t>::max());
  EXPECT_EQ(cudaMalloc(&more, std::numeric_limits<std::size_t>::max()), cudaErrorMemoryAllocation);
  EXPECT_EQ(cudaGetLastError(), cudaErrorMemoryAllocation);
}

TEST(StandinMemory, ChecksBothSidesOfACopy) {
  const Buffer buffer = zeros(8);
  const Buffer other = zeros(8);
  double host[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  const struct {
    void* target;
    const void* source;
    std::size_t bytes;
    cudaMemcpyKind kind;
    cudaError_t expected;
  } rows[] = {
      {buffer, host, 64, cudaMemcpyHostToDevice, cudaSuccess},
      {other, buffer, 64, cudaMemcpyDeviceToDevice, cudaSuccess},
      {host + 5, other + 2, 16, cudaMemcpyDeviceToHost, cudaSuccess},
      {buffer, nullptr, 0, cudaMemcpyHostToDevice, cudaSuccess},
      {buffer, host, 72, cudaMemcpyHostToDevice, cudaErrorInvalidValue},  // too long
      {buffer + 1, host, 64, cudaMemcpyHostToDevice, cudaErrorInvalidValue},
      {host, host + 4, 32, cudaMemcpyDeviceToHost, cudaErrorInvalidValue},  // wrong side
      {buffer, other, 64, cudaMemcpyHostToDevice, cudaErrorInvalidValue},
      {nullptr, host, 64, cudaMemcpyHostToDevice, cudaErrorInvalidValue},
  };
  for (const auto& row : rows)
    EXPECT_EQ(cudaMemcpy(row.target, row.source, row.bytes, row.kind), row.expected) << &row - rows;
  EXPECT_EQ(host[5], 3);
  EXPECT_EQ(host[6], 4);
  EXPECT_EQ(cudaFree(buffer + 1), cudaErrorInvalidValue);
  EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
  EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidValue);
}

class StandinMemoryDeath : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(StandinMemoryDeath, HostCodeCannotTouchIt) {
  const Buffer buffer = zeros(4);
  EXPECT_DEATH(*static_cast<volatile double*>(buffer) = 1, "");
  EXPECT_DEATH(static_cast<void>(*static_cast<volatile double*>(buffer)), "");
}

TEST_F(StandinMemoryDeath, AKernelCannotLeaveAnAllocation) {
  const Buffer buffer = zeros(32);  // 256 bytes: the guard page follows at once
  EXPECT_DEATH(standin::launch(store, 1, 1, 0, buffer, 32), "");
  EXPECT_DEATH(standin::launch(store, 1, 1, 0, buffer, -512), "");
#ifdef __SANITIZE_ADDRESS__
  const Buffer odd = zeros(31);
  EXPECT_DEATH(standin::launch(store, 1, 1, 0, odd, 31), "use-after-poison");
#endif
}

TEST_F(StandinMemoryDeath, TakesItsSizeFromTheEnvironment) {
  const auto allocate = [](const char* memory) {
    setenv("STANDIN_DEVICE_MEMORY", memory, 1);
    void* pointer = nullptr;
    std::_Exit(cudaMalloc(&pointer, 4097));
  };
  EXPECT_EXIT(allocate("4096"), ::testing::ExitedWithCode(cudaErrorMemoryAllocation), "");
  EXPECT_EXIT(allocate("4097"), ::testing::ExitedWithCode(cudaSuccess), "");
  for (const char* memory : {"", "4k", "-1", "99999999999999999999"})
    EXPECT_DEATH(allocate(memory), "STANDIN_DEVICE_MEMORY is not a number of bytes");
}

}  // namespace
