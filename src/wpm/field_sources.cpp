#include "wpm/field_sources.h"

#include <cmath>

#include "constants.h"
#include "data/dataset.h"
#include "diagnostics.h"
#include "wpm/lp01.h"
#include "wpm/sampled_field.h"
#include "wpm/source.h"

using waves::fill_slice;
using waves::report_wave;
using waves::Source;

double init_lp01_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                      const struct_emfield& f, bool is_quiet) {
  const Source source(*so, f);
  if (!Lp01::exists(f.r * source.metres, f.n, f.ne, kTwoPi / source.lambda))
    diagnostics::fail(
        data::place(so->sysname, f.line) +
        ": a fibre of these r, n and ne has no mode at this lambda: all must be above "
        "0, and n, of the core, above ne");
  const Lp01 mode(f.r * source.metres, f.n, f.ne, kTwoPi / source.lambda);
  report_wave(Log(is_quiet), source, f,
              {{"x", f.x}, {"y", f.y}, {"r", f.r}, {"n", f.n}, {"ne", f.ne}});
  fill_slice(E, F, N, source, [&](int ix, int iy, double n, double& amplitude) {
    amplitude = f.amp * mode(std::hypot(source.x(ix), source.y(iy)));
    return std::exp(cpx(0.0, source.phase(ix, iy, n))) * amplitude;
  });
  return source.lambda;
}

double init_file_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                      const struct_emfield& f, bool is_quiet) {
  struct_emfield at_entry = f;  // z tells the slice of the file, not a phase
  at_entry.z = 0;
  const Source source(*so, at_entry);
  const SampledField field({so->sysname, f.file, f.dataset, f.dx * source.metres,
                            f.dy * source.metres, f.z * source.metres, f.line},
                           Grid(*so));
  report_wave(Log(is_quiet), source, f, {{"x", f.x}, {"y", f.y}});
  const double amp = f.amp == 0 ? 1.0 : f.amp;
  fill_slice(E, F, N, source, [&](int ix, int iy, double n, double& amplitude) {
    cpx value = field(source.x(ix), source.y(iy)) * amp;
    // A product with 1 + 0i could lose the sign of a zero.
    if (f.theta != 0) value *= std::exp(cpx(0.0, source.phase(ix, iy, n)));
    amplitude = std::abs(value);
    return value;
  });
  return source.lambda;
}
