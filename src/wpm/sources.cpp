#include <cmath>
#include <cstdlib>

#include "wpm/source.h"
#include "wpm/wpm.h"

using waves::fill_slice;
using waves::report_wave;
using waves::Source;

double init_plane_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                       const struct_emfield& f, bool is_quiet) {
  const Source source(*so, f);
  report_wave(Log(is_quiet), source, f, {{"x", f.x}, {"y", f.y}});
  fill_slice(E, F, N, source, [&](int ix, int iy, double n, double& amplitude) {
    amplitude = f.amp;
    return std::exp(cpx(0.0, source.phase(ix, iy, n))) * f.amp;
  });
  return source.lambda;
}

double init_gauss_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                       const struct_emfield& f, bool is_quiet) {
  const Source source(*so, f);
  const double sigmax = f.sigmax * source.metres;
  const double sigmay = f.sigmay * source.metres;
  report_wave(Log(is_quiet), source, f, {{"beta", f.beta}});
  fill_slice(E, F, N, source, [&](int ix, int iy, double n, double& amplitude) {
    const double x = source.x(ix);
    const double y = source.y(iy);
    // Divided by pi: sigma is the half width where the intensity is exp(-2/pi) of its peak.
    const double envelope = -((y * y) / (sigmay * sigmay) + (x * x) / (sigmax * sigmax)) / kPi;
    amplitude = f.amp;
    return std::exp(cpx(envelope, source.phase(ix, iy, n))) * f.amp;
  });
  return source.lambda;
}

double init_random_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                        const struct_emfield& f, bool is_quiet) {
  const Source source(*so, f);
  Log(is_quiet) << std::endl
                << std::endl
                << "\033[31m\t\t\t\tscale = " << source.metres << std::endl
                << "*** Random Wave ***" << std::endl
                << "\033[0m" << std::endl;
  fill_slice(E, F, N, source, [&](int ix, int iy, double n, double& amplitude) {
    // The generator is never seeded: every run gets its default sequence. The amplitude goes as the
    // square of amp.
    const double rndm = ((std::rand() % 1000) * f.amp) / 1000.0;
    amplitude = rndm * f.amp;
    return std::exp(cpx(0.0, source.phase(ix, iy, n))) * amplitude;
  });
  return source.lambda;
}
