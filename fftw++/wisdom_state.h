// FFTW's accumulated wisdom as text, in both precisions, for runs that go on in another process.
#pragma once

#include <string>

namespace fftwpp {

// With what the wisdom file holds.
std::string wisdom_text();
std::string single_wisdom_text();

// Imports both and lets them stand: the wisdom file, read before, is not read again. To be called
// before the first plan.
void restore_wisdom(const std::string& wisdom, const std::string& single_wisdom);

// Plans that are made from now on leave the file as it is.
void close_wisdom();
bool is_wisdom_closed();

}  // namespace fftwpp
