// The spherical lens, and the kinds that are reserved and write nothing yet.
#include "system/slab.h"
#include "system/system.h"

// Works on the file's spacings as they stand, without the metric factor and the substitutes of the
// other components: a spacing of 0 in z takes no slice that could be painted.
int init_lens_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  const Frame frame(*so);
  const Slab slab(N, *so, l.z / so->dz);
  const double last = static_cast<double>(so->izlast) + slab.taken - 1;
  // The sphere touches the end of the component: a positive radius puts the vertex at the last
  // slice, a negative one at the first with the centre behind it.
  const double z0 = l.r > 0 ? last * so->dz - l.r : so->izlast * so->dz - l.r;
  for (int iz = slab.first; iz < slab.end; ++iz)
    for (int iy = 0; iy < frame.ny; ++iy)
      for (int ix = 0; ix < frame.nx; ++ix) {
        const double u = ix * so->dx - so->nx * so->dx * 0.5 - l.dx;
        const double v = iy * so->dy - so->ny * so->dy * 0.5 - l.dy;
        const double w = iz * so->dz - z0 - l.dz;
        const bool is_outside = u * u + v * v + w * w > l.r * l.r;
        slab.paint(ix, iy, iz, is_outside ? cpx(l.ne, l.ke) : cpx(l.n, l.k));
      }
  return slab.taken;
}

namespace {

int take_slices_only(const struct_sysOptions& so, const struct_layer& l) {
  const Frame frame(so);
  return Slab(nullptr, so, l.z / (frame.dz / frame.metres)).taken;
}

}  // namespace

int init_asphere_system(cpx* /*N*/, const struct_sysOptions* so, const struct_layer& l) {
  return take_slices_only(*so, l);
}

int init_mzehnder_system(cpx* /*N*/, const struct_sysOptions* so, const struct_layer& l) {
  return take_slices_only(*so, l);
}
