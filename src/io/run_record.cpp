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

// Waits for its turn, but not for ever: a script may hold the lock itself while it runs us.
bool lock(const Descriptor& file) {
  using namespace std::chrono_literals;
  const auto end = std::chrono::steady_clock::now() + 10s;
  while (flock(file.number(), LOCK_EX | LOCK_NB) != 0) {
    if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() > end)
      return false;
    std::this_thread::sleep_for(1ms);
  }
  return true;
}

bool append(const std::string& name, const std::string& row) {
  // Many runs may share one record. The folder is locked, not the record: whether a run creates it
  // must be decided before it exists, and an empty one that was there already gets no header.
  const std::string folder = folder_of(name);
  const Descriptor turn(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const bool has_turn = turn.number() >= 0 && lock(turn);
  struct stat status {};
  bool is_new = stat(name.c_str(), &status) != 0;
  Descriptor file(open(name.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  if (file.number() < 0 || fstat(file.number(), &status) != 0) return false;
  // Some network file systems lock files alone; the first to find the record empty begins it.
  if (!has_turn && lock(file)) is_new = fstat(file.number(), &status) == 0 && status.st_size == 0;
  const std::string header =
      "cfile;kernel_id;block_size;nz;ny;nx;kernel_time;cpu_time;err-max;speed-up\n";
  if (write_all(file.number(), is_new ? header + row : row)) return file.release();
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
