#include "main/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <utility>

#include "diagnostics.h"

namespace {

constexpr std::size_t kBufferSize = 1U << 18U;
constexpr mode_t kPermissions = 0666;  // less the umask

}  // namespace

OutputFile::OutputFile(std::string name, Mode mode)
    : name_(std::move(name)),
      descriptor_(
          open(name_.c_str(),
               O_WRONLY | O_CREAT | O_CLOEXEC | (mode == Mode::kAppend ? O_APPEND : O_TRUNC),
               kPermissions)) {
  if (descriptor_ < 0)
    diagnostics::warn(name_ + ": cannot be opened for writing: " + std::strerror(errno));
  buffer_.reserve(kBufferSize + 64);
}

OutputFile::~OutputFile() {
  flush();
  if (descriptor_ >= 0 && close(descriptor_) != 0) {
    descriptor_ = -1;
    fail();
  }
}

OutputFile& OutputFile::operator<<(double value) {
  // The C locale's %g: what a stream writes by default, at a fraction of the cost.
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6);
  return *this << std::string_view(text, static_cast<std::size_t>(result.ptr - text));
}

OutputFile& OutputFile::operator<<(int value) {
  return *this << std::to_string(value);
}

OutputFile& OutputFile::operator<<(std::string_view text) {
  buffer_ += text;
  if (buffer_.size() >= kBufferSize) flush();
  return *this;
}

OutputFile& OutputFile::operator<<(char c) {
  return *this << std::string_view(&c, 1);
}

void OutputFile::flush() {
  std::string_view rest = buffer_;
  while (descriptor_ >= 0 && !rest.empty()) {
    const ssize_t written = write(descriptor_, rest.data(), rest.size());
    if (written >= 0)
      rest.remove_prefix(static_cast<std::size_t>(written));
    else if (errno != EINTR)
      fail();
  }
  buffer_.clear();
}

// Says so once; from then on nothing more is written.
void OutputFile::fail() {
  diagnostics::warn(name_ + ": not fully written: " + std::strerror(errno));
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
}

void warn_if_unwritable(const std::string& name) {
  struct stat status {};
  const bool exists = stat(name.c_str(), &status) == 0;
  // Opening a pipe or a device could wait or have effects; those are taken on trust.
  if (exists && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return;
  const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kPermissions);
  if (descriptor < 0) {
    diagnostics::warn(name + ": will not be written: " + std::strerror(errno));
    return;
  }
  close(descriptor);
  if (!exists) unlink(name.c_str());
}
