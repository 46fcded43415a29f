#include "main/sweep_point.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>

namespace sweep {
namespace {

constexpr const char* kLog = "zerith.log";
constexpr const char* kMessages = "zerith.err";

}  // namespace

pid_t start_point(const std::filesystem::path& folder, const std::vector<std::string>& words,
                  const sigset_t& mask) {
  std::vector<std::string> copies = words;
  std::vector<char*> argv;
  argv.reserve(copies.size() + 1);
  for (std::string& word : copies) argv.push_back(word.data());
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  constexpr int kWrite = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, kLog, kWrite, 0666);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, kMessages, kWrite, 0666);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  posix_spawnattr_setsigmask(&attributes, &mask);

  pid_t process = -1;
  const int error =
      posix_spawn(&process, "/proc/self/exe", &actions, &attributes, argv.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (error == 0) return process;
  errno = error;
  return -1;
}

int exit_status(int wait_status) {
  return WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : 128 + WTERMSIG(wait_status);
}

std::string last_message(const std::filesystem::path& folder, int status) {
  if (status > 128 && status < 128 + SIGRTMAX)
    return "ended by signal " + std::to_string(status - 128);
  std::ifstream file(folder / kMessages);
  std::string last;
  for (std::string line; std::getline(file, line);)
    if (!line.empty()) last = line;
  for (const std::string prefix : {"zerith: ", "error: "})
    if (last.starts_with(prefix)) last.erase(0, prefix.size());
  return last;
}

Table::Figures last_rows(const std::filesystem::path& folder,
                         const std::vector<std::string>& files) {
  Table::Figures figures;
  for (const std::string& name : files) {
    std::ifstream file(folder / name);
    std::string header;
    std::string last;
    std::getline(file, header);
    for (std::string line; std::getline(file, line);)
      if (!line.empty()) last = line;
    const std::vector<std::string> columns = csv_fields(header);
    const std::vector<std::string> values = csv_fields(last);
    if (last.empty() || columns.size() != values.size()) continue;
    const std::string stem = std::filesystem::path(name).stem().string();
    for (std::size_t c = 0; c < columns.size(); ++c)
      figures.emplace_back(stem + "." + columns[c], values[c]);
  }
  return figures;
}

}  // namespace sweep
