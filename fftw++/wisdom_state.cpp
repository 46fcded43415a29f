#include "wisdom_state.h"

#include <cstdlib>

#include "fftw++.h"

namespace fftwpp {
namespace {

bool is_closed = false;

}  // namespace

// Reads the wisdom file too, even before the first plan: a run that resumes with this text does not
// read it.
std::string wisdom_text() {
  fftw_init_threads();
  fftw::ReadWisdom();
  char* text = fftw_export_wisdom_to_string();
  std::string result = text != nullptr ? text : "";
  std::free(text);
  return result;
}

std::string single_wisdom_text() {
  char* text = fftwf_export_wisdom_to_string();
  std::string result = text != nullptr ? text : "";
  std::free(text);
  return result;
}

void restore_wisdom(const std::string& wisdom, const std::string& single_wisdom) {
  fftw_init_threads();
  fftw_import_wisdom_from_string(wisdom.c_str());
  fftwf_import_wisdom_from_string(single_wisdom.c_str());
  fftw::Wise = true;
}

void close_wisdom() {
  is_closed = true;
}

bool is_wisdom_closed() {
  return is_closed;
}

}  // namespace fftwpp
