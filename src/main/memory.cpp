#include <cstdlib>

#include "diagnostics.h"
#include "main/stages.h"

namespace {

template <typename T>
void check_array(const T* array, const std::string& s) {
  if (array == nullptr) std::cout << "Error - Memory allocation " << s << std::endl;
}

// Cleared, so a voxel that nothing writes is 0 in every run.
template <typename T>
T* allocate(std::size_t count, const std::string& name) {
  auto* array = static_cast<T*>(std::calloc(count, sizeof(T)));
  check(array, name);
  if (array == nullptr && count > 0)
    diagnostics::fail("no memory for " + name + ", " + std::to_string(count * sizeof(T)) +
                      " bytes; make nx, ny or nz smaller");
  return array;
}

}  // namespace

void check(const double* array, const std::string& s) {
  check_array(array, s);
}
void check(const cpx* array, const std::string& s) {
  check_array(array, s);
}

double* allocate_doubles(std::size_t count, const std::string& name) {
  return allocate<double>(count, name);
}

cpx* allocate_complex(std::size_t count, const std::string& name) {
  return allocate<cpx>(count, name);
}

void release(Run& run) {
  std::free(run.X);
  std::free(run.Y);
  std::free(run.KX);
  std::free(run.KY);
  std::free(run.N);
  std::free(run.E);
  std::free(run.h_E);
  std::free(run.h_N);
  std::free(run.h_KX);
  std::free(run.h_KY);
  // F is left to the end of the process.
}
