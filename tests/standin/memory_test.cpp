// Device memory that is as strict as a GPU's.
#include <cstdint>
#include <functional>
#include <utility>

#include "cufft.h"
#include "kernel/device_test.h"
#include "standin.h"

namespace {

using Buffer = DeviceArray<double>;

void store(double* target, int index) {
  target[index] = 1;
}

TEST(StandinMemory, IsAlignedAndZeroAndNoMoreThanItsLimit) {
  standin::set_memory_limit(1000);
  const Buffer buffer(100);
  double* more = buffer;
  EXPECT_EQ(cudaMalloc(&more, 201), cudaErrorMemoryAllocation);
  EXPECT_EQ(more, nullptr);
  EXPECT_EQ(cudaGetLastError(), cudaErrorMemoryAllocation);
  EXPECT_EQ(cudaMalloc(&more, 200), cudaSuccess);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(more) % 256, 0U);
  std::vector<double> host(25, 1.0);
  EXPECT_EQ(cudaMemcpy(host.data(), more, 200, cudaMemcpyDeviceToHost), cudaSuccess);
  EXPECT_EQ(host, std::vector<double>(25));
  EXPECT_EQ(cudaFree(more), cudaSuccess);
  standin::set_memory_limit(std::size_t{1} << 40);
}

TEST(StandinMemory, ChecksBothSidesOfACopy) {
  const Buffer buffer(8), other(8);
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
      {buffer, host, 72, cudaMemcpyHostToDevice, cudaErrorInvalidValue},  // too long
      {buffer + 1, host, 64, cudaMemcpyHostToDevice, cudaErrorInvalidValue},
      {host, host + 4, 32, cudaMemcpyDeviceToHost, cudaErrorInvalidValue},  // wrong side
      {buffer, other, 64, cudaMemcpyHostToDevice, cudaErrorInvalidValue},
  };
  for (const auto& row : rows)
    EXPECT_EQ(cudaMemcpy(row.target, row.source, row.bytes, row.kind), row.expected) << &row - rows;
  EXPECT_EQ(host[6], 4);
  EXPECT_EQ(cudaFree(buffer + 1), cudaErrorInvalidValue);
  EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidValue);
}

TEST(StandinMemory, CopiesARectangleAndNothingAroundIt) {
  const Buffer buffer(std::vector<double>{1, 2, 3, 4, 5, 6});  // two rows of three
  double host[6] = {};
  const auto copy = [&](std::size_t columns, std::size_t rows) {
    return cudaMemcpy2D(host + 2, 16, buffer + 1, 24, 8 * columns, rows, cudaMemcpyDeviceToHost);
  };
  EXPECT_EQ(copy(1, 2), cudaSuccess);
  EXPECT_EQ(std::vector<double>(host, host + 6), (std::vector<double>{0, 0, 2, 0, 5, 0}));
  EXPECT_EQ(copy(1, 3), cudaErrorInvalidValue) << "more rows than there are";
  EXPECT_EQ(copy(3, 1), cudaErrorInvalidValue) << "wider than the host's rows are apart";
  cudaEvent_t event = nullptr;
  float ms = 0;
  EXPECT_EQ(cudaEventCreate(&event), cudaSuccess);
  EXPECT_EQ(cudaEventElapsedTime(&ms, event, event), cudaErrorInvalidValue) << "never recorded";
  EXPECT_EQ(cudaEventDestroy(event), cudaSuccess);
  cudaGetLastError();
}

TEST(StandinMemory, IsClearedAsFarAsItGoes) {
  const Buffer buffer(std::vector<double>{1, 2, 3});
  EXPECT_EQ(cudaMemset(buffer + 1, 0, 8), cudaSuccess);
  EXPECT_EQ(buffer.download(), (std::vector<double>{1, 0, 3}));
  EXPECT_EQ(cudaMemset(buffer + 1, 0, 17), cudaErrorInvalidValue);
  EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidValue);
}

// Each kind of call is counted and fails at its turn: the second after the request.
TEST(StandinCalls, AreCountedAndFailOnceOnDemand) {
  using standin::Call;
  const Buffer buffer(1);
  double host = 0;
  cufftHandle plan = 0;
  const auto runtime = [](cudaError_t status) { return static_cast<int>(status); };
  const std::pair<Call, std::function<int()>> kinds[] = {
      {Call::kAllocation,
       [&] {
         double* memory = nullptr;
         const cudaError_t status = cudaMalloc(&memory, 8);
         cudaFree(memory);
         return runtime(status);
       }},
      {Call::kPlan, [&] { return int(cufftPlan2d(&plan, 1, 1, CUFFT_Z2Z)); }},
      {Call::kCopy, [&] { return runtime(cudaMemcpy(&host, buffer, 8, cudaMemcpyDeviceToHost)); }},
      {Call::kLaunch, [&] { return runtime(standin::launch(store, 1, 1, 0, buffer, 0)); }},
      {Call::kSynchronisation, [&] { return runtime(cudaDeviceSynchronize()); }}};
  standin::count_anew();
  for (const auto& [call, ask] : kinds) {
    EXPECT_EQ(standin::count_of(call), 0);
    standin::fail_call(call, 2);
    EXPECT_EQ(ask(), 0);
    EXPECT_NE(ask(), 0);
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(standin::count_of(call), 3);
  }
  cudaGetLastError();
}

TEST(StandinMemoryDeath, IsClosedToTheHostAndBeyondItsEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const Buffer buffer(32);  // 256 bytes: the guard page follows at once
  EXPECT_DEATH(*static_cast<volatile double*>(buffer) = 1, "");
  EXPECT_DEATH(static_cast<void>(*static_cast<volatile double*>(buffer)), "");
  EXPECT_DEATH(standin::launch(store, 1, 1, 0, buffer, 32), "");
  EXPECT_DEATH(standin::launch(store, 1, 1, 0, buffer, -512), "");
#ifdef __SANITIZE_ADDRESS__
  const Buffer odd(31);
  EXPECT_DEATH(standin::launch(store, 1, 1, 0, odd, 31), "use-after-poison");
#endif
}

}  // namespace
