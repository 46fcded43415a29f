// What follows from the number of ranks alone, and what follows from their collecting texts.
#include "ranks/ranks.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "diagnostics.h"

namespace ranks {

namespace {

// How launchers tell a process how many they started, and which it is: mpirun of Open MPI, those
// that speak PMI, and srun. In a batch script itself, where one process runs, none of these is set.
struct Launcher {
  const char* processes;
  const char* number;
};
constexpr Launcher kLaunchers[] = {{"OMPI_COMM_WORLD_SIZE", "OMPI_COMM_WORLD_RANK"},
                                   {"PMI_SIZE", "PMI_RANK"},
                                   {"SLURM_STEP_NUM_TASKS", "SLURM_PROCID"}};

int number_in(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr ? std::atoi(value) : 0;
}

}  // namespace

// The program reads its environment nowhere else, and here to refuse alone: no result depends on
// it.
void require_alone(const std::string& why) {
  for (const auto& [processes, number] : kLaunchers) {
    const int count = number_in(processes);
    if (count <= 1) continue;
    if (number_in(number) != 0) {  // one says so, and most launchers then end the others
      std::this_thread::sleep_for(std::chrono::seconds(2));
      std::exit(-1);
    }
    diagnostics::fail("started as one of " + std::to_string(count) + " processes, but " + why +
                      " (one that is meant to be by itself: env -u " + processes + " zerith ...)");
  }
}

Share share_of(int n, int rank, int ranks) {
  const auto begin_of = [=](int r) {
    return std::min(std::max(n, 0), kGroup * ((groups_of(n) * r + ranks - 1) / ranks));
  };
  return {begin_of(rank), begin_of(rank + 1)};
}

bool any(bool mine) {
  return most(mine ? 1 : 0) != 0;
}

bool all(bool mine) {
  return !any(!mine);
}

void sum(double* values, std::size_t size) {
  if (count() == 1 || size == 0) return;
  const std::string of_all =
      from_all({reinterpret_cast<const char*>(values), size * sizeof(double)});
  std::fill_n(values, size, 0.0);
  for (std::size_t place = 0; place < of_all.size(); place += size * sizeof(double))
    for (std::size_t i = 0; i < size; ++i) {
      double value = 0;
      std::memcpy(&value, of_all.data() + place + i * sizeof value, sizeof value);
      values[i] += value;
    }
}

double sum(double value) {
  sum(&value, 1);
  return value;
}

double from_first(double value) {
  const std::string bytes = from_first({reinterpret_cast<const char*>(&value), sizeof value});
  std::memcpy(&value, bytes.data(), sizeof value);
  return value;
}

}  // namespace ranks
