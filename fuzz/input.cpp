#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "fuzz.h"

InputFile::InputFile()
    : descriptor_(memfd_create("input", 0)), name_("/proc/self/fd/" + std::to_string(descriptor_)) {
  if (descriptor_ < 0) std::abort();
}

void InputFile::write(const void* data, std::size_t size) const {
  if (ftruncate(descriptor_, 0) != 0 ||
      pwrite(descriptor_, data, size, 0) != static_cast<ssize_t>(size))
    std::abort();
}
