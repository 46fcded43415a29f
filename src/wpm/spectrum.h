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

  // The unnormalised forward transform of a slice, [ny][nx], on every rank, from the rank's own
  // rows of it; valid until the next call. For all ranks to call, as the constructor is.
  const cpx* of(cpx* own_rows);

 private:
  int ny_, nx_;
  std::unique_ptr<cpx, void (*)(void*)> S_;
  std::unique_ptr<fftwpp::fft2d> forward_;
};

}  // namespace wpm
