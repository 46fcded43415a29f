// Wisdom that may be trusted: what FFTW is given to read, and what is written over.
#pragma once

#include <string_view>

namespace fftwpp {

// Whether text begins with wisdom in which every number fits its field. Like FFTW, takes any blanks
// between the words and any text after the end. FFTW itself turns down unknown solvers and the
// wisdom of other versions, but ends the process over a number that is too wide.
bool is_sound_wisdom(std::string_view text);

// Whether a file stands at name that can be read to its end, and soon: no pipe, device or folder,
// and not far larger than wisdom ever is.
bool is_readable_wisdom(const char* name);

// Whether a file stands at name, or nothing does: no pipe, device or folder.
bool is_writable_wisdom(const char* name);

}  // namespace fftwpp
