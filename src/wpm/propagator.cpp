#include <cstdlib>
#include <memory>

#include "diagnostics.h"
#include "fftw++.h"
#include "wpm/progress.h"
#include "wpm/superposition.h"
#include "wpm/wpm.h"

namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

// The spectrum buffer S; every transform overwrites it.
std::unique_ptr<cpx, Free> allocate_spectrum(std::size_t samples) {
  auto* S = static_cast<cpx*>(std::malloc(samples * sizeof(cpx)));
  if (S == nullptr)
    diagnostics::fail("no memory for the spectrum of a slice, " +
                      std::to_string(samples * sizeof(cpx)) + " bytes; make nx and ny smaller");
  return std::unique_ptr<cpx, Free>(S);
}

}  // namespace

void zerith_3D(cpx* E, double* F, const cpx* N, const cpx* KX, const double* X, const cpx* KY,
               const double* Y, double k0, double dz, double /*dy*/, double /*dx*/, int nz, int ny,
               int nx, bool do_evanescent_modes, bool is_magnetic_field, polarization pol) {
  const StepOptions options = {k0, dz, do_evanescent_modes, is_magnetic_field, pol};
  const std::size_t plane = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
  const auto S = allocate_spectrum(plane);
  // nx is the first, slower extent although the rows of a slice hold nx samples: on a grid that is
  // not square the transform reads the slice as nx rows of ny. The system is defined so.
  fftwpp::fft2d forward(static_cast<unsigned int>(nx), static_cast<unsigned int>(ny), -1, nullptr,
                        S.get());
  SliceProgress progress(nz - 1);
  for (int k = 0; k < nz - 1; ++k) {
    const std::size_t here = static_cast<std::size_t>(k) * plane;
    const std::size_t next = here + plane;
    forward.fft(E + here, S.get());
    superpose(plane_waves(S.get(), KX, KY, ny, nx), options,
              {E + next, F + next, N + here, N + next, X, Y, ny, nx});
    progress.step_done();
  }
}
