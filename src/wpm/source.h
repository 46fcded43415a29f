// What every wave source shares: the geometry of its samples, the loop over slice 0 and the report
// on the log.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>

#include "constants.h"
#include "log.h"
#include "system/slab.h"

namespace waves {

// The locals that all waves share.
struct Source : Frame {
  Source(const struct_sysOptions& so, const struct_emfield& f);

  // The phase of sample (ix, iy), whose local index is n.
  [[nodiscard]] double phase(int ix, int iy, double n) const {
    return ((x(ix) * nux + y(iy) * nuy) + z * nuz) * (kTwoPi * n);
  }
  [[nodiscard]] double x(int ix) const { return (ix - cx) * dx - x0; }
  [[nodiscard]] double y(int iy) const { return (iy - cy) * dy - y0; }

  int cx, cy;  // the sample at 0
  double lambda;
  double sx, sy, sz;
  double nux, nuy, nuz;
  double x0, y0, z;
};

// Stores value(ix, iy, n) of every sample in slice 0 of E, and the flux of its amplitude in F.
// value also sets the sample's amplitude.
template <typename Value>
void fill_slice(cpx* E, double* F, const cpx* N, const Source& source, Value value) {
  // ix outermost: it fixes which sample gets which random number.
  for (int ix = 0; ix < source.nx; ++ix)
    for (int iy = 0; iy < source.ny; ++iy) {
      const std::int64_t index = std::int64_t{iy} * source.nx + ix;
      double amplitude = 0.0;
      E[index] = value(ix, iy, N[index].real(), amplitude);
      F[index] = amplitude * amplitude * (kTwoPi * source.nuz);
    }
}

// The red block of a wave with a direction on the log; own: the lines that only its kind has.
void report_wave(const Log& log, const Source& source, const struct_emfield& f,
                 std::initializer_list<std::pair<const char*, double>> own);

}  // namespace waves
