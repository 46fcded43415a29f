// Aligned storage for transforms, and the way out when there is none.
#pragma once

#include <complex>

using Complex = std::complex<double>;

namespace Array {

// Throws Error of status 1 with the message "ERROR: x.".
[[noreturn]] void ArrayExit(const char* x);

// Sets v to len elements of value (0, 0) at a multiple of align bytes, a power of two. Failure ends
// in ArrayExit.
void newAlign(Complex*& v, std::size_t len, std::size_t align);

// Releases what newAlign gave.
void deleteAlign(Complex* v);

}  // namespace Array
