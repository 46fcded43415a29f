// One point of a sweep: a process in a folder of its own.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "main/sweep_table.h"

namespace sweep {

// Starts this program anew in the folder, with the words as its command line, signals as in mask;
// its log goes to zerith.log there, its messages to zerith.err. Returns the process, or -1 with
// errno set.
pid_t start_point(const std::filesystem::path& folder, const std::vector<std::string>& words,
                  const sigset_t& mask);

// Exit status, or 128 and the signal, from what waitpid says.
int exit_status(int wait_status);

// Why a point failed: the last line of its messages.
std::string last_message(const std::filesystem::path& folder, int status);

// The last row of each table, its columns named "stem.column" after the file.
Table::Figures last_rows(const std::filesystem::path& folder,
                         const std::vector<std::string>& files);

}  // namespace sweep
