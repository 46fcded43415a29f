#include "wpm/progress.h"
#include "wpm/spectrum.h"
#include "wpm/superposition.h"
#include "wpm/wpm.h"

void zerith_3D(cpx* E, double* F, const cpx* N, const cpx* KX, const double* X, const cpx* KY,
               const double* Y, double k0, double dz, double /*dy*/, double /*dx*/, int nz, int ny,
               int nx, bool do_evanescent_modes, bool is_magnetic_field, polarization pol) {
  const StepOptions options = {k0, dz, do_evanescent_modes, is_magnetic_field, pol};
  const std::size_t plane = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
  wpm::Spectrum spectrum(ny, nx);
  SliceProgress progress(nz - 1);
  for (int k = 0; k < nz - 1; ++k) {
    const std::size_t here = static_cast<std::size_t>(k) * plane;
    const std::size_t next = here + plane;
    const cpx* S = spectrum.of(E + here);
    superpose(plane_waves(S, KX, KY, ny, nx), options,
              {E + next, F + next, N + here, N + next, X, Y, ny, nx});
    progress.step_done();
  }
}
