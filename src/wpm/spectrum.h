// The raw transform of a slice.
#pragma once

#include <memory>

#include "system/system.h"

namespace fftwpp {
class fft2d;
}

namespace wpm {

class Spectrum {
 public:
  // Plans with FFTW_MEASURE; reads and rewrites the wisdom file.
  Spectrum(int ny, int nx);
  ~Spectrum();
  Spectrum(const Spectrum&) = delete;
  Spectrum& operator=(const Spectrum&) = delete;

  // The unnormalised forward transform of slice, [ny][nx]; valid until the next call.
  const cpx* of(cpx* slice);

 private:
  std::unique_ptr<cpx, void (*)(void*)> S_;
  std::unique_ptr<fftwpp::fft2d> forward_;
};

}  // namespace wpm
