// The one rank of a build without MPI.
#include <cstring>

#include "ranks/ranks.h"

namespace ranks {

void join(int& /*argc*/, char**& /*argv*/) {
  require_alone(
      "this build is without MPI and each would do the whole run and write the same files: build "
      "with -DZERITH_MPI=on, start one process, or give each a working folder of its own and add "
      "--independent");
}
bool answers_for_all() {
  return true;
}

int leave(int status) {
  return status;
}

int count() {
  return 1;
}
int mine() {
  return 0;
}
void meet() {}
int most(int mine) {
  return mine;
}
std::string from_first(const std::string& text) {
  return text;
}
std::string from_all(const std::string& mine) {
  return mine;
}

void gather_lines(const void* mine, void* all, int /*n*/, Share wanted, std::size_t line_bytes) {
  std::memcpy(all,
              static_cast<const char*>(mine) + static_cast<std::size_t>(wanted.begin) * line_bytes,
              static_cast<std::size_t>(wanted.size()) * line_bytes);
}
void gather_lines_everywhere(const void* mine, void* all, int n, std::size_t line_bytes) {
  gather_lines(mine, all, n, {0, n}, line_bytes);
}
void scatter_lines(const void* all, void* mine, int n, std::size_t line_bytes) {
  gather_lines(all, mine, n, {0, n}, line_bytes);
}
void transpose(int /*rows*/, int /*columns*/, const std::complex<double>* /*from*/,
               std::size_t /*from_step*/, std::complex<double>* /*to*/, std::size_t /*to_step*/) {}

}  // namespace ranks
