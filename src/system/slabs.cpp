// Components that fill whole slices: the uniform slab and the crossed grating.
#include <cmath>
#include <sstream>

#include "diagnostics.h"
#include "system/slab.h"
#include "system/system.h"

namespace {

// Half a grating length in samples, rounded up to whole samples first.
int half_samples(double length, double spacing) {
  return truncate_to_int(std::floor(std::ceil(length / spacing) * 0.5));
}

// Whether sample i lies off the bars. The halves of period and width serve as modulus and
// threshold, so the pattern repeats at half the period that the file states, in phase with the
// grid's first sample and not with its centre. The pattern is defined so.
bool is_off_bar(int i, int half_width, int half_period) {
  return (i + half_width / 2) % half_period > half_width;
}

void require_period(const struct_sysOptions& so, const char* key, double period, double spacing,
                    int number) {
  if (half_samples(period, spacing) != 0) return;
  std::ostringstream text;
  text << so.sysname << ": layer";
  if (number > 0) text << ' ' << number;
  text << " (grating): " << key << " = " << period
       << " is under two samples of the grid, whose spacing is " << spacing << "; make " << key
       << " more than " << spacing << " or the grid finer";
  diagnostics::fail(text.str());
}

}  // namespace

int init_homog_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  const Frame frame(*so);
  const Slab slab(N, *so, l.z / (frame.dz / frame.metres));
  for (int iz = slab.first; iz < slab.end; ++iz)
    for (int iy = 0; iy < frame.ny; ++iy)
      for (int ix = 0; ix < frame.nx; ++ix) slab.paint(ix, iy, iz, {l.n, l.k});
  return slab.taken;
}

void require_grating_periods(const struct_sysOptions* so, const struct_layer& l, int number) {
  const Frame frame(*so);
  if (Slab(nullptr, *so, l.z / (frame.dz / frame.metres)).taken <= 0) return;
  require_period(*so, "px", l.px, frame.dx / frame.metres, number);
  require_period(*so, "py", l.py, frame.dy / frame.metres, number);
}

int init_grating_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  require_grating_periods(so, l, 0);
  const Frame frame(*so);
  const Slab slab(N, *so, l.z / (frame.dz / frame.metres));
  const int npx2 = half_samples(l.px, frame.dx / frame.metres);
  const int npy2 = half_samples(l.py, frame.dy / frame.metres);
  const int nwx2 = half_samples(l.wx, frame.dx / frame.metres);
  const int nwy2 = half_samples(l.wy, frame.dy / frame.metres);

  // One quadrant, mirrored to the other three.
  for (int iz = slab.first; iz < slab.end; ++iz)
    for (int ix = frame.nx / 2; ix < frame.nx; ++ix)
      for (int iy = frame.ny / 2; iy < frame.ny; ++iy) {
        const bool is_cell = is_off_bar(ix, nwx2, npx2) && is_off_bar(iy, nwy2, npy2);
        const cpx material = is_cell ? cpx(l.ne, l.ke) : cpx(l.n, l.k);
        slab.paint(ix, iy, iz, material);
        slab.paint(frame.nx - 1 - ix, iy, iz, material);
        slab.paint(ix, frame.ny - 1 - iy, iz, material);
        slab.paint(frame.nx - 1 - ix, frame.ny - 1 - iy, iz, material);
      }
  return slab.taken;
}
