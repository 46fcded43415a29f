#include "wpm/spectrum.h"

#include <cstdlib>
#include <string>

#include "diagnostics.h"
#include "fftw++.h"

namespace wpm {
namespace {

cpx* allocate_samples(std::size_t samples) {
  auto* S = static_cast<cpx*>(std::malloc(samples * sizeof(cpx)));
  if (S == nullptr)
    diagnostics::fail("no memory for the spectrum of a slice, " +
                      std::to_string(samples * sizeof(cpx)) + " bytes; make nx and ny smaller");
  return S;
}

}  // namespace

// nx is the first, slower extent although the rows of a slice hold nx samples: on a grid that is
// not square the transform reads the slice as nx rows of ny. The system is defined so.
Spectrum::Spectrum(int ny, int nx)
    : S_(allocate_samples(static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny)), std::free) {
  forward_ = std::make_unique<fftwpp::fft2d>(static_cast<unsigned int>(nx),
                                             static_cast<unsigned int>(ny), -1, nullptr, S_.get());
}

Spectrum::~Spectrum() = default;

const cpx* Spectrum::of(cpx* slice) {
  forward_->fft(slice, S_.get());
  return S_.get();
}

}  // namespace wpm
