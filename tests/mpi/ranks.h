// Runs of the real program by several ranks.
#pragma once

#include <string>

#include "support/process.h"

// Ranks share the processors with other tests: waiting ranks yield.
inline std::string launcher() {
  return "OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 "
         "OMPI_MCA_rmaps_base_oversubscribe=1 OMPI_MCA_mpi_yield_when_idle=1 exec " ZERITH_MPIRUN;
}
inline std::string mpirun(int ranks) {
  std::string command = launcher();
  command.append(" -n ").append(std::to_string(ranks)).append(" ");
  return command;
}

inline RunResult run_ranks(const TempDir& directory, int ranks, const std::string& options) {
  return run_shell(directory, mpirun(ranks) + "\"$ZERITH\" " + options);
}

// Counts the occurrences of part in text.
inline int count_of(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    ++count;
  return count;
}
