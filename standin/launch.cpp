// Launches: blocks over the cores, or a team of threads that shares a block's memory and barrier.
#include <barrier>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <optional>
#include <system_error>
#include <thread>

#include "device.h"
#include "standin.h"

constinit thread_local uint3 threadIdx{};
constinit thread_local uint3 blockIdx{};
constinit thread_local dim3 blockDim{};
constinit thread_local dim3 gridDim{};

namespace standin {
namespace {

// A block's barrier and dynamic shared memory, used again for one block after another.
struct Team {
  std::optional<std::barrier<>> barrier;
  std::vector<double2> shared;
};

constinit thread_local Team* current_team = nullptr;

std::int64_t volume(dim3 extent) {
  return static_cast<std::int64_t>(extent.x) * extent.y * extent.z;
}

// Position number index of extent, x running fastest.
uint3 position(std::int64_t index, dim3 extent) {
  const std::int64_t row = index / extent.x;
  return {static_cast<unsigned>(index % extent.x), static_cast<unsigned>(row % extent.y),
          static_cast<unsigned>(row / extent.y)};
}

// An extent that came from a negative number is a huge one here.
bool is_within(dim3 extent, dim3 limit) {
  return extent.x >= 1 && extent.x <= limit.x && extent.y >= 1 && extent.y <= limit.y &&
         extent.z >= 1 && extent.z <= limit.z;
}

bool is_possible(dim3 grid, dim3 block, std::size_t shared_bytes) {
  return is_within(grid, {0x7fffffff, 65535, 65535}) && is_within(block, {1024, 1024, 64}) &&
         volume(block) <= kMaxThreadsPerBlock && shared_bytes <= kMaxSharedMemory;
}

// The OpenMP runtime's fork and join are invisible to ThreadSanitizer, which would report them as
// races.
#ifdef __SANITIZE_THREAD__
constexpr bool kMayFork = false;
#else
[[maybe_unused]] constexpr bool kMayFork = true;
#endif

void run_block(std::int64_t b, dim3 grid, dim3 block, const std::function<void()>& body) {
  gridDim = grid;
  blockDim = block;
  blockIdx = position(b, grid);
  for (threadIdx.z = 0; threadIdx.z < block.z; ++threadIdx.z)
    for (threadIdx.y = 0; threadIdx.y < block.y; ++threadIdx.y)
      for (threadIdx.x = 0; threadIdx.x < block.x; ++threadIdx.x) body();
}

// Bringing threads together costs more than many launches do: the first block tells how long the
// others will take, and threads are asked for only if that is worth it.
void run_independent(dim3 grid, dim3 block, const std::function<void()>& body) {
  using clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kWorthThreads(1);
  const std::int64_t blocks = volume(grid);
  const auto begin = clock::now();
  run_block(0, grid, block, body);
  [[maybe_unused]] const bool is_worth_it = (clock::now() - begin) * (blocks - 1) > kWorthThreads;
#pragma omp parallel for schedule(dynamic) if (kMayFork && is_worth_it)
  for (std::int64_t b = 1; b < blocks; ++b) run_block(b, grid, block, body);
}

// A thread that leaves the kernel leaves the block's barrier for good, as on a device. The next
// block begins when all have left, with a barrier of full strength and undefined shared memory.
void run_cooperating(dim3 grid, dim3 block, std::size_t shared_bytes,
                     const std::function<void()>& body) {
  const std::int64_t blocks = volume(grid);
  const std::int64_t members = volume(block);
  const std::size_t pairs = (shared_bytes + sizeof(double2) - 1) / sizeof(double2);
  Team team{std::nullopt, std::vector<double2>(pairs)};
  const auto next_block = [&team, members]() noexcept {
    team.barrier.emplace(members);
    std::memset(team.shared.data(), 0xff, team.shared.size() * sizeof(double2));
  };
  std::barrier end_of_block(members, next_block);
  next_block();

  const auto run_member = [&](std::int64_t member) {
    current_team = &team;
    gridDim = grid;
    blockDim = block;
    threadIdx = position(member, block);
    for (std::int64_t b = 0; b < blocks; ++b) {
      blockIdx = position(b, grid);
      body();
      team.barrier->arrive_and_drop();
      end_of_block.arrive_and_wait();
    }
  };
  std::vector<std::jthread> threads;
  try {
    for (std::int64_t member = 0; member < members; ++member)
      threads.emplace_back(run_member, member);
  } catch (const std::system_error&) {
    misuse("the host has too few threads for the block");
  }
}

}  // namespace

cudaError_t launch_grid(dim3 grid, dim3 block, std::size_t shared_bytes,
                        const std::vector<const void*>& pointers,
                        const std::function<void()>& body) {
  const std::lock_guard lock(device().mutex);
  Errors& errors = device().errors;
  if (errors.is_faulted()) return errors.record(cudaSuccess);
  if (!device().calls.take(Call::kLaunch)) return errors.record(cudaErrorLaunchOutOfResources);
  if (!is_possible(grid, block, shared_bytes)) return errors.record(cudaErrorInvalidConfiguration);
  const Access access(device().memory, pointers);
  if (!access.is_granted()) {
    errors.fault(cudaErrorIllegalAddress);
    return cudaSuccess;  // the configuration was good; the fault shows in the next call
  }
  if (shared_bytes == 0)
    run_independent(grid, block, body);
  else
    run_cooperating(grid, block, shared_bytes, body);
  return cudaSuccess;
}

void* dynamic_shared_memory() {
  if (current_team == nullptr) misuse("the kernel was launched without dynamic shared memory");
  return current_team->shared.data();
}

}  // namespace standin

void __syncthreads() {  // NOLINT(bugprone-reserved-identifier)
  if (standin::current_team == nullptr)
    standin::misuse("__syncthreads() in a kernel that was launched without dynamic shared memory");
  standin::current_team->barrier->arrive_and_wait();
}
