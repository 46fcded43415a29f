#include "wpm/spectrum.h"

#include <cstdlib>
#include <string>
#include <vector>

#include "diagnostics.h"
#include "fftw++.h"
#include "wpm/wisdom_of_ranks.h"

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
    : ny_(ny),
      nx_(nx),
      S_(allocate_samples(static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny)), std::free) {
  plan_alike([&] {
    forward_ = std::make_unique<fftwpp::fft2d>(
        static_cast<unsigned int>(nx), static_cast<unsigned int>(ny), -1, nullptr, S_.get());
  });
}

Spectrum::~Spectrum() = default;

const cpx* Spectrum::of(cpx* own_rows) {
  if (ranks::count() == 1) {
    forward_->fft(own_rows, S_.get());
    return S_.get();
  }
  std::vector<cpx> slice(static_cast<std::size_t>(nx_) * static_cast<std::size_t>(ny_));
  ranks::gather_lines_everywhere(own_rows, slice.data(), ny_,
                                 static_cast<std::size_t>(nx_) * sizeof(cpx));
  forward_->fft(slice.data(), S_.get());
  return S_.get();
}

}  // namespace wpm
