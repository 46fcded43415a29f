// Launches: refusals and barriers.
#include "kernel/device_test.h"
#include "standin.h"

namespace {

void increment(int* count) {
  ++*count;
}

// Threads swap numbers with their mirror images three times, through shared memory.
void mirror(int* numbers) {
  auto* shared = static_cast<int*>(standin::dynamic_shared_memory());
  const unsigned B = blockDim.x, t = threadIdx.x;
  shared[t] = static_cast<int>(blockIdx.x * B + t);
  for (int turn = 0; turn < 3; ++turn) {
    __syncthreads();
    const int number = shared[B - 1 - t];
    __syncthreads();
    shared[t] = number;
  }
  numbers[blockIdx.x * B + t] = shared[t];
}

TEST(StandinLaunch, RefusesWhatADeviceRefuses) {
  const DeviceArray<int> count(1);
  const auto minus = static_cast<unsigned>(-3);
  const struct {
    dim3 grid, block;
    std::size_t shared;
  } rows[] = {{{0, 1}, 1, 0},  {{1, 65536}, 1, 0}, {minus, 1, 0},
              {1, 0, 0},       {1, {1025}, 0},     {1, {33, 32}, 0},
              {1, {minus}, 0}, {1, {1, 1, 65}, 0}, {1, 1, 48 * 1024 + 1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(standin::launch(increment, row.grid, row.block, row.shared, count),
              cudaErrorInvalidConfiguration);
    EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidConfiguration);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
  }
}

// A host pointer does not fault at once. Every later call reports the error until it is read.
TEST(StandinLaunch, HostPointerIsAnIllegalAddress) {
  int host = 0;
  const DeviceArray<int> count(1);
  for (int* pointer : {&host, static_cast<int*>(nullptr), count + 1}) {
    EXPECT_EQ(standin::launch(increment, 1, 1, 0, pointer), cudaSuccess);
    EXPECT_EQ(standin::launch(increment, 1, 1, 0, count), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
  }
  EXPECT_EQ(host, 0);
  EXPECT_EQ(count.download()[0], 0);
}

TEST(StandinLaunch, BarriersHoldTheWholeBlock) {
  for (const unsigned B : {1U, 48U, 1024U}) {
    const DeviceArray<int> numbers(3 * B);
    ASSERT_EQ(standin::launch(mirror, 3, B, B * sizeof(int), numbers), cudaSuccess);
    const std::vector<int> result = numbers.download();
    for (unsigned v = 0; v < 3 * B; ++v) ASSERT_EQ(result[v], int(v / B * B + B - 1 - v % B));
  }
}

}  // namespace
