#include "memory_handler.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

namespace {

// Without memory: no string, no stream. No destructors either, since other threads may be at work.
void out_of_memory() {
  constexpr std::string_view kText =
      "zerith: error: no memory left; make nx, ny or nz smaller, or free memory on this machine\n";
  std::fflush(stdout);
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kText.data(), kText.size());
  std::_Exit(255);
}

}  // namespace

void install_memory_handler() {
  std::set_new_handler(out_of_memory);
}
