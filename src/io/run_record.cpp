#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <sstream>
#include <thread>
#include <utility>

#include "diagnostics.h"
#include "io/io.h"
#include "io/output_file.h"

namespace {

// A descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  [[nodiscard]] int number() const { return number_; }
  // Closes now; false, with errno, if that lost something.
  bool release() { return close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

constexpr const char* kHeader =
    "cfile;kernel_id;block_size;nz;ny;nx;kernel_time;cpu_time;err-max;speed-up\n";

// Waits for other writers, but not long: a script may keep the lock itself while it runs us.
void lock(const Descriptor& file) {
  using namespace std::chrono_literals;
  const auto end = std::chrono::steady_clock::now() + 500ms;
  while (flock(file.number(), LOCK_EX | LOCK_NB) != 0) {
    if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() > end) return;
    std::this_thread::sleep_for(1ms);
  }
}

// Makes the record with its first lines: it gets its name once it is whole, so that of many runs
// one writes the header. False, with nothing made, if the record exists or the file system has no
// files without a name.
bool create(const std::string& name, const std::string& lines) {
  const Descriptor file(open(folder_of(name).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666));
  if (file.number() < 0 || !write_all(file.number(), lines)) return false;
  const std::string nameless = "/proc/self/fd/" + std::to_string(file.number());
  return linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, target_of(name).c_str(), AT_SYMLINK_FOLLOW) ==
         0;
}

bool append(const std::string& name, const std::string& row) {
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CLOEXEC;
  int number = open(name.c_str(), kFlags);
  const bool is_missing = number < 0 && errno == ENOENT;
  if (is_missing && create(name, kHeader + row)) return true;
  if (is_missing) number = open(name.c_str(), kFlags | O_CREAT, 0666);
  Descriptor file(number);
  if (file.number() < 0) return false;
  lock(file);
  struct stat status {};
  if (fstat(file.number(), &status) != 0) return false;
  // An empty record that was there before gets no header.
  const bool is_new = is_missing && S_ISREG(status.st_mode) && status.st_size == 0;
  if (write_all(file.number(), is_new ? kHeader + row : row)) return file.release();
  // A disk that filled up in the middle: no torn row stays.
  const int reason = errno;
  if (S_ISREG(status.st_mode) && ftruncate(file.number(), status.st_size) != 0)
    diagnostics::error(name + ": its last row is torn");
  errno = reason;
  return false;
}

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): both names come by value
void store_results(std::string filename, std::string cfile, int kernel, int blockSize, int nz,
                   int ny, int nx, double kernelTime, double cpuTime, double err) {
  std::ostringstream row;
  row << cfile << ';' << kernel << ';' << blockSize << ';' << nz << ';' << ny << ';' << nx << ';'
      << kernelTime << ';' << cpuTime << ';' << err << ';' << cpuTime / kernelTime << '\n';
  if (!append(filename, row.str()))
    diagnostics::error(filename + ": a row is lost, it cannot be written: " + std::strerror(errno) +
                       "; the row is " + row.str().substr(0, row.str().size() - 1));
}
