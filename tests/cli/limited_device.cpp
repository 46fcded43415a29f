// The program on a device of as many bytes as the environment says: what no run can ask for.
#include <cstdlib>

#include "standin.h"

std::size_t standin::memory_of_device() {
  const char* bytes = std::getenv("LIMITED_DEVICE_BYTES");
  return bytes == nullptr ? 0 : std::strtoull(bytes, nullptr, 10);
}
