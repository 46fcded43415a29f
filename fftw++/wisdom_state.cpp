#include "wisdom_state.h"

#include <cstdlib>

#include "fftw++.h"

namespace fftwpp {
namespace {

bool is_closed = false;
std::string closed_text, closed_single_text;

}  // namespace

// The file's too, though no plan of this process has asked for it yet: a run that goes on with this
// text does not look there.
std::string wisdom_text() {
  if (is_closed) return closed_text;
  fftw_init_threads();
  fftw::ReadWisdom();
  char* text = fftw_export_wisdom_to_string();
  std::string result = text != nullptr ? text : "";
  std::free(text);
  return result;
}

std::string single_wisdom_text() {
  if (is_closed) return closed_single_text;
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
  closed_text = wisdom_text();
  closed_single_text = single_wisdom_text();
  is_closed = true;
}

bool is_wisdom_closed() {
  return is_closed;
}

}  // namespace fftwpp
