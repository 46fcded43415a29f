#include <unistd.h>

#include "standin.h"

std::size_t standin::memory_of_device() {
  return static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) *
         static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}
