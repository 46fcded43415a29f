// Round cores along z: the straight guide, the taper and the S-curved splitter arm.
#include <cmath>

#include "system/slab.h"
#include "system/system.h"

namespace {

// Lateral geometry in file units, measured from the grid's first sample.
struct Disc {
  double cx, cy;

  // A sample exactly on the circle belongs to the core.
  [[nodiscard]] bool leaves_out(double x, double y, double radius_squared) const {
    const double u = x - cx;
    const double v = y - cy;
    return u * u + v * v > radius_squared;
  }
};

Disc centred_disc(const Frame& frame, const struct_layer& l) {
  return {((frame.nx * frame.dx) / frame.metres) * 0.5 + l.x,
          ((frame.ny * frame.dy) / frame.metres) * 0.5 + l.y};
}

}  // namespace

int init_wguide_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  const Frame frame(*so);
  const Slab slab(N, *so, l.z / (frame.dz / frame.metres));
  const Disc core = centred_disc(frame, l);
  const double sx = frame.dx / frame.metres;
  const double sy = frame.dy / frame.metres;
  // iy innermost, unlike its neighbours: on a grid with overlapping rows the order of writing
  // shows.
  for (int iz = slab.first; iz < slab.end; ++iz)
    for (int ix = 0; ix < frame.nx; ++ix)
      for (int iy = 0; iy < frame.ny; ++iy) {
        const bool is_outside = core.leaves_out(ix * sx, iy * sy, l.r * l.r);
        slab.paint(ix, iy, iz, is_outside ? cpx(l.ne, l.ke) : cpx(l.n, l.k));
      }
  return slab.taken;
}

int init_taper_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  const Frame frame(*so);
  const Slab slab(N, *so, l.z / (frame.dz / frame.metres));
  const Disc core = centred_disc(frame, l);
  const double sx = frame.dx / frame.metres;
  const double sy = frame.dy / frame.metres;
  const double slope = (l.rout - l.rin) / slab.taken;  // of the cut length
  for (int iz = slab.first; iz < slab.end; ++iz) {
    const double radius = (iz - so->izlast) * slope + l.rin;  // rout itself is never reached
    for (int iy = 0; iy < frame.ny; ++iy)
      for (int ix = 0; ix < frame.nx; ++ix) {
        const bool is_outside = core.leaves_out(ix * sx, iy * sy, radius * radius);
        slab.paint(ix, iy, iz, is_outside ? cpx(l.ne, l.ke) : cpx(l.n, l.k));
      }
  }
  return slab.taken;
}

int init_splitter_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  const Frame frame(*so);
  const Slab slab(N, *so, l.z / (frame.dz / frame.metres));
  const Disc start = centred_disc(frame, l);
  const double slope = (l.rout - l.rin) / slab.taken;
  const int middle = slab.taken / 2;
  for (int iz = slab.first; iz < slab.end; ++iz) {
    const int liz = iz - so->izlast;
    // Starts at 0 (the constant is the arctangent of pi) and rises towards 1.61, not 1: the final
    // displacement is about 1.6 times wx and wy.
    const double atan_shape =
        (std::atan((6.2831853 / slab.taken) * (liz - middle)) + 1.262627255348652) / 1.570796325;
    const Disc core = {l.wx * atan_shape + start.cx, l.wy * atan_shape + start.cy};
    // The threshold is the sum of two equal squares: the disc's radius is radius * sqrt(2).
    const double radius = slope * liz + l.rin;
    const double threshold = radius * radius + radius * radius;
    for (int iy = 0; iy < frame.ny; ++iy)
      for (int ix = 0; ix < frame.nx; ++ix) {
        const double x = std::fabs(ix * frame.dx / frame.metres);
        const double y = std::fabs(iy * frame.dy / frame.metres);
        slab.paint(ix, iy, iz, core.leaves_out(x, y, threshold) ? cpx(l.ne, l.ke) : cpx(l.n, l.k));
      }
  }
  return slab.taken;
}
