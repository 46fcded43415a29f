#include "Array.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>

#include "diagnostics.h"

namespace Array {

void ArrayExit(const char* x) {
  throw zerith::Error(std::string("ERROR: ") + x + ".", 1);
}

void newAlign(Complex*& v, std::size_t len, std::size_t align) {
  void* memory = nullptr;
  const int result = posix_memalign(&memory, align, len * sizeof(Complex));
  if (result == EINVAL) ArrayExit("Invalid alignment requested");
  if (result == ENOMEM) ArrayExit("Memory limits exceeded");
  v = static_cast<Complex*>(memory);
  std::uninitialized_fill_n(v, len, Complex(0.0, 0.0));
}

void deleteAlign(Complex* v) {
  std::free(v);
}

}  // namespace Array
