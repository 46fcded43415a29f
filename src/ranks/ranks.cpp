// Functions of the number of ranks, and functions that gather texts.
#include "ranks/ranks.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "diagnostics.h"

namespace ranks {

namespace {

// The launchers' variables for the number of processes and the place of each: mpirun of Open MPI,
// PMI launchers, MVAPICH, and srun. A batch script itself has none of them.
struct Launcher {
  const char* processes;
  const char* number;
};
constexpr Launcher kLaunchers[] = {{"OMPI_COMM_WORLD_SIZE", "OMPI_COMM_WORLD_RANK"},
                                   {"PMI_SIZE", "PMI_RANK"},
                                   {"MV2_COMM_WORLD_SIZE", "MV2_COMM_WORLD_RANK"},
                                   {"SLURM_STEP_NUM_TASKS", "SLURM_PROCID"}};

int number_in(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr ? std::atoi(value) : 0;
}

// The launcher that started several processes, or null.
const Launcher* launcher() {
  for (const Launcher& launcher : kLaunchers)
    if (number_in(launcher.processes) > 1) return &launcher;
  return nullptr;
}

}  // namespace

// Only this file reads the environment. No result depends on it.

// PMIx, which some launchers use alone, gives the place of a process but not their number.
bool has_launcher() {
  return std::getenv("PMIX_RANK") != nullptr ||
         std::ranges::any_of(kLaunchers, [](const Launcher& launcher) {
           return std::getenv(launcher.processes) != nullptr;
         });
}

int launched() {
  const Launcher* const by = launcher();
  return by != nullptr ? number_in(by->processes) : 1;
}

bool is_first_launched() {
  const Launcher* const by = launcher();
  return by == nullptr || number_in(by->number) == 0;
}

void require_alone(const std::string& why) {
  if (launched() == 1) return;
  // The first one reports it. Most launchers then end the others.
  if (!is_first_launched()) std::this_thread::sleep_for(std::chrono::seconds(2));
  diagnostics::fail("started as one of " + std::to_string(launched()) + " processes, but " + why);
}

void require_own_folder() {
  if (launched() == 1) return;
  const int folder = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0 && flock(folder, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
    diagnostics::fail(
        "--independent: another process works in this folder and writes the same files; give each "
        "of the " +
        std::to_string(launched()) + " processes a folder of its own");
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
