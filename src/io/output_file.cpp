#include "io/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <utility>

#include "diagnostics.h"

namespace {

constexpr std::size_t kBufferSize = 1U << 18U;
constexpr mode_t kPermissions = 0666;  // less the umask

// Pipes and devices have no length to go back to: they take what follows.
bool cut_off(int descriptor, std::int64_t position) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return false;
  if (!S_ISREG(status.st_mode)) return true;
  errno = EINVAL;  // for a file that has become shorter
  return status.st_size >= position && ftruncate(descriptor, position) == 0 &&
         lseek(descriptor, position, SEEK_SET) == position;
}

}  // namespace

bool write_all(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written >= 0)
      text.remove_prefix(static_cast<std::size_t>(written));
    else if (errno != EINTR)
      return false;
  }
  return true;
}

std::string target_of(const std::string& name) {
  namespace fs = std::filesystem;
  constexpr int kLinks = 40;  // as many as the kernel follows
  fs::path path = name;
  std::error_code error;
  for (int i = 0; i < kLinks && fs::is_symlink(path, error); ++i)
    path = path.parent_path() / fs::read_symlink(path, error);
  return path.string();
}

std::string folder_of(const std::string& name) {
  const std::filesystem::path path = target_of(name);
  return path.has_parent_path() ? path.parent_path().string() : ".";
}

OutputFile::OutputFile(std::string name)
    : name_(std::move(name)),
      descriptor_(open(name_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kPermissions)) {
  if (descriptor_ < 0)
    diagnostics::error(name_ + ": lost, it cannot be opened for writing: " + std::strerror(errno));
  buffer_.reserve(kBufferSize + 64);
}

OutputFile::OutputFile(std::string name, std::int64_t position)
    : name_(std::move(name)),
      descriptor_(open(name_.c_str(), O_WRONLY | O_CLOEXEC)),
      position_(position) {
  if (position == kLost) {
    if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
    diagnostics::error(name_ + ": lost, it was not fully written before the checkpoint");
  } else if (descriptor_ < 0 || !cut_off(descriptor_, position))
    diagnostics::fail(name_ + ": the run cannot go on behind byte " + std::to_string(position) +
                      " of this file: " + std::strerror(errno) +
                      "; remove the checkpoint to begin anew");
  buffer_.reserve(kBufferSize + 64);
}

OutputFile::~OutputFile() {
  flush();
  if (descriptor_ >= 0 && close(descriptor_) != 0) {
    descriptor_ = -1;
    fail();
  }
}

OutputFile& OutputFile::put(double value, int digits) {
  // The C locale's %g: what a stream writes by default, at a fraction of the cost.
  char text[40];
  const auto result =
      std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits);
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

std::int64_t OutputFile::save() {
  flush();
  // Pipes and devices cannot be synchronised, and need not be.
  if (descriptor_ >= 0 && fsync(descriptor_) != 0 && errno != EINVAL && errno != EROFS) fail();
  return descriptor_ >= 0 ? position_ : kLost;
}

void OutputFile::flush() {
  if (descriptor_ >= 0 && !write_all(descriptor_, buffer_)) fail();
  position_ += static_cast<std::int64_t>(buffer_.size());
  buffer_.clear();
}

// Says so once; from then on nothing more is written.
void OutputFile::fail() {
  diagnostics::error(name_ + ": lost, it is not fully written: " + std::strerror(errno));
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
}
