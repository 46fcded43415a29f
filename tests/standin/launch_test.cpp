// Launches: what is refused, that every thread runs once, and that barriers are barriers.
#include <gtest/gtest.h>

#include <vector>

#include "device_array.h"
#include "standin.h"

namespace {

using Counts = DeviceArray<int>;

Counts zeros(unsigned size) {
  return Counts(std::vector<int>(size));
}

void count(int* counts, int) {
  const unsigned block = (blockIdx.z * gridDim.y + blockIdx.y) * gridDim.x + blockIdx.x;
  const unsigned thread = (threadIdx.z * blockDim.y + threadIdx.y) * blockDim.x + threadIdx.x;
  ++counts[block * blockDim.x * blockDim.y * blockDim.z + thread];
}

// Each thread hands its number to its mirror image, twice, through shared memory; odd threads of
// the last block leave before the second time.
void mirror(int* counts, int leavers) {
  auto* shared = static_cast<int*>(standin::dynamic_shared_memory());
  const unsigned B = blockDim.x, t = threadIdx.x;
  shared[t] = static_cast<int>(blockIdx.x * B + t);
  __syncthreads();
  const int first = shared[B - 1 - t];
  if (leavers != 0 && blockIdx.x == gridDim.x - 1 && t % 2 == 1) return;
  __syncthreads();
  shared[B - 1 - t] = first;
  __syncthreads();
  counts[blockIdx.x * B + t] = shared[B - 1 - t];
}

void wait_alone(int*, int) {
  __syncthreads();
}

TEST(StandinLaunch, RefusesWhatADeviceRefuses) {
  const Counts counts = zeros(1);
  const auto minus = static_cast<unsigned>(-3);
  const struct {
    dim3 grid, block;
    std::size_t shared;
  } rows[] = {{{0, 1}, 1, 0},  {{1, 65536}, 1, 0}, {minus, 1, 0},
              {1, 0, 0},       {1, {1025}, 0},     {1, {33, 32}, 0},
              {1, {minus}, 0}, {1, {1, 1, 65}, 0}, {1, 1, 48 * 1024 + 1}};
  for (const auto& row : rows) {
    const std::ptrdiff_t number = &row - rows;
    EXPECT_EQ(standin::launch(count, row.grid, row.block, row.shared, counts, 0),
              cudaErrorInvalidConfiguration)
        << number;
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess) << number;
    EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidConfiguration) << number;
  }
  EXPECT_EQ(cudaGetLastError(), cudaSuccess);
}

TEST(StandinLaunch, RunsEveryThreadOnce) {
  for (const std::size_t shared : {std::size_t{0}, std::size_t{16}}) {
    const Counts counts = zeros(5 * 3 * 2 * 4 * 3 * 2);
    ASSERT_EQ(standin::launch(count, {5, 3, 2}, {4, 3, 2}, shared, counts, 0), cudaSuccess);
    for (const int times : counts.download()) EXPECT_EQ(times, 1);
  }
}

// A pointer that is not the device's does not fault here and now: the next call says so, and so
// does every other until the error is asked for.
TEST(StandinLaunch, HostPointerIsAnIllegalAddress) {
  int host = 0;
  const Counts counts = zeros(1);
  int* freed = nullptr;
  cudaMalloc(&freed, 4);
  cudaFree(freed);
  for (int* pointer : {&host, freed, static_cast<int*>(nullptr), counts + 1}) {
    EXPECT_EQ(standin::launch(count, 1, 1, 0, pointer, 0), cudaSuccess);
    EXPECT_EQ(standin::launch(count, 1, 1, 0, counts, 0), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
  }
  EXPECT_EQ(host, 0);
  EXPECT_EQ(counts.download()[0], 0);
}

TEST(StandinLaunch, BarriersHoldTheWholeBlock) {
  for (const unsigned B : {1U, 2U, 48U, 1024U}) {
    constexpr unsigned kBlocks = 3;
    const Counts counts = zeros(kBlocks * B);
    ASSERT_EQ(standin::launch(mirror, kBlocks, B, B * sizeof(int), counts, 0), cudaSuccess);
    const std::vector<int> result = counts.download();
    for (unsigned b = 0; b < kBlocks; ++b)
      for (unsigned t = 0; t < B; ++t)
        ASSERT_EQ(result[b * B + t], static_cast<int>(b * B + B - 1 - t)) << B;
  }
}

TEST(StandinLaunch, BarrierForgetsThreadsThatLeft) {
  const Counts counts = zeros(2 * 64);
  ASSERT_EQ(standin::launch(mirror, 2, 64, 256, counts, 1), cudaSuccess);
  EXPECT_EQ(counts.download()[64], 127);
  EXPECT_EQ(counts.download()[65], 0);
}

TEST(StandinLaunchDeath, BarrierNeedsSharedMemory) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const Counts counts = zeros(1);
  EXPECT_DEATH(standin::launch(wait_alone, 1, 1, 0, counts, 0), "without dynamic shared memory");
}

TEST(StandinErrors, HaveTheRuntimesWords) {
  const std::pair<int, const char*> rows[] = {{0, "no error"},
                                              {1, "invalid argument"},
                                              {2, "out of memory"},
                                              {9, "invalid configuration argument"},
                                              {700, "an illegal memory access was encountered"},
                                              {999, "unrecognized error code"}};
  for (const auto& [number, text] : rows)
    EXPECT_STREQ(cudaGetErrorString(static_cast<cudaError_t>(number)), text);
}

}  // namespace
