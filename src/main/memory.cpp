#include "main/memory.h"

#include "diagnostics.h"
#include "main/run.h"

template <typename T>
HostArray<T>::HostArray(std::size_t count, const char* name)
    : data_(static_cast<T*>(std::calloc(count, sizeof(T)))) {
  check(data_.get(), name);
  if (data_ == nullptr && count > 0)
    diagnostics::fail(std::string("no memory for ") + name + ", " +
                      std::to_string(count * sizeof(T)) +
                      " bytes; make nx, ny or nz smaller, or hold slices instead of volumes with "
                      "--stream or --fast");
}

template class HostArray<cpx>;
template class HostArray<double>;
template class HostArray<cufftDoubleComplex>;
