// FFTW's accumulated wisdom as text, in both precisions, for runs that resume in another process.
#pragma once

#include <string>

namespace fftwpp {

// Includes the wisdom file.
std::string wisdom_text();
std::string single_wisdom_text();

// Imports both and keeps them: the wisdom file is not read again. Call it before the first plan.
void restore_wisdom(const std::string& wisdom, const std::string& single_wisdom);

// Later plans leave the wisdom file unchanged.
void close_wisdom();
bool is_wisdom_closed();

}  // namespace fftwpp
