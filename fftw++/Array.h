// Aligned storage for transforms, and the error if there is none.
#pragma once

#include <complex>

using Complex = std::complex<double>;

namespace Array {

// Throws Error of status 1 with the message "ERROR: x.".
[[noreturn]] void ArrayExit(const char* x);

// Sets v to len elements of value (0, 0) at a multiple of align bytes, a power of two. Calls
// ArrayExit on failure.
void newAlign(Complex*& v, std::size_t len, std::size_t align);

// Releases memory of newAlign.
void deleteAlign(Complex* v);

}  // namespace Array
