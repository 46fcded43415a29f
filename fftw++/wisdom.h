// Checks of wisdom before FFTW reads it and before its file is replaced.
#pragma once

#include <string_view>

namespace fftwpp {

// Whether text begins with wisdom in which every number fits its field. Like FFTW, accepts any
// blanks between words and any text after the end. FFTW itself rejects unknown solvers and wisdom
// of other versions. It ends the process if a number is too wide.
bool is_sound_wisdom(std::string_view text);

// Whether name is a readable file of a plausible size: no pipe, device or folder.
bool is_readable_wisdom(const char* name);

// Whether name is a file or does not exist: no pipe, device or folder.
bool is_writable_wisdom(const char* name);

}  // namespace fftwpp
