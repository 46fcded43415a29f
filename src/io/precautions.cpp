// What is looked after before a run begins, so that none ends without its results.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "diagnostics.h"
#include "io/io.h"
#include "io/output_file.h"

namespace {

// Why the file could not be written, as an errno; 0 if it could. Nothing is created or changed.
int obstacle(const std::string& name) {
  struct stat status {};
  if (stat(name.c_str(), &status) == 0) {
    // Opening a pipe or a device could wait or have effects; those are taken on trust.
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return 0;
    const int descriptor = open(name.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) return errno;
    close(descriptor);
    return 0;
  }
  if (errno != ENOENT || name.empty()) return errno;
  // A file that is still to be made: its folder decides.
  if (name.back() == '/') return EISDIR;
  return faccessat(AT_FDCWD, folder_of(name).c_str(), W_OK | X_OK, AT_EACCESS) == 0 ? 0 : errno;
}

bool is_same_file(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace

std::string why_unwritable(const std::string& name) {
  const int reason = obstacle(name);
  return reason == 0 ? "" : std::strerror(reason);
}

void warn_if_unwritable(const std::string& name) {
  if (const std::string reason = why_unwritable(name); !reason.empty())
    diagnostics::warn(name + ": will not be written: " + reason);
}

void refuse_own_input(const std::string& input, const std::vector<std::string>& outputs) {
  struct stat read {
  }, written{};
  if (stat(input.c_str(), &read) != 0 || !S_ISREG(read.st_mode)) return;
  for (const std::string& output : outputs)
    if (stat(output.c_str(), &written) == 0 && is_same_file(read, written))
      diagnostics::fail(std::string(input)
                            .append(": the run reads this file and would write ")
                            .append(output)
                            .append(", which is the same; copy it to another name, or run in "
                                    "another folder"));
}

void empty_results(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    struct stat status {};
    if (stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0 &&
        truncate(name.c_str(), 0) != 0)
      diagnostics::warn(name + ": still holds the results of another run: " + std::strerror(errno));
  }
}
