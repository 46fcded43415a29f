// The component kinds, and the rasterisers that paint one of them into a whole volume.
#include <algorithm>

#include "system/rule.h"

namespace {

double thickness_in_frame(const struct_sysOptions& so, const struct_layer& l) {
  const Frame frame(so);
  return l.z / (frame.dz / frame.metres);
}

// The lens uses the file's spacing without the metric factor and the substitute of the others. A
// spacing of 0 takes no slice that could be painted.
double thickness_in_file_units(const struct_sysOptions& so, const struct_layer& l) {
  return l.z / so.dz;
}

double no_thickness(const struct_sysOptions& /*so*/, const struct_layer& /*l*/) {
  return 0;
}

constexpr Kind kKinds[] = {
    {HOMOG, "create HOMOG ... ", thickness_in_frame, make_homog},
    {GRATING, "create GRATING ... ", thickness_in_frame, make_grating},
    {WGUIDE, "create WGUIDE ... ", thickness_in_frame, make_guide},
    {TAPER, "create TAPER ... ", thickness_in_frame, make_taper},
    {LENS, "create LENS ... ", thickness_in_file_units, make_lens},
    {ASPHERE, "create ASPHERE (not supported yet)", thickness_in_frame, nullptr},
    {SPLITTER, "create SPLITTER ... ", thickness_in_frame, make_splitter},
    {MZEHNDER, "MZEHNDER (not supported yet)", thickness_in_frame, nullptr},
    {GRIN, "create GRIN ... ", thickness_in_frame, make_grin},
    {SCREEN, "create SCREEN ... ", no_thickness, nullptr},
    {INDEX_FILE, "create FILE ... ", thickness_of_file, make_index_file},
};

int rasterise(component t, cpx* N, const struct_sysOptions& so, const struct_layer& l) {
  const Kind& kind = *kind_of(t);
  const Slab slab(so, kind.thickness(so, l));
  if (t == GRATING) require_grating_periods(so, slab, l, 0);
  if (kind.rule == nullptr || slab.first >= slab.end) return slab.taken;
  const Frame frame(so);
  const Canvas canvas(N, frame, {0, frame.ny, 0, frame.nz});
  const std::unique_ptr<Rule> rule = kind.rule(so, slab, l);
  for (int iz = slab.first; iz < slab.end; ++iz) rule->paint(iz, canvas);
  return slab.taken;
}

}  // namespace

const Kind* kind_of(component t) {
  const Kind* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [t](const Kind& candidate) { return candidate.t == t; });
  return kind == std::end(kKinds) ? nullptr : kind;
}

int init_homog_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  return rasterise(HOMOG, N, *so, l);
}
int init_grating_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  return rasterise(GRATING, N, *so, l);
}
int init_wguide_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  return rasterise(WGUIDE, N, *so, l);
}
int init_taper_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  return rasterise(TAPER, N, *so, l);
}
int init_splitter_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  return rasterise(SPLITTER, N, *so, l);
}
int init_lens_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  return rasterise(LENS, N, *so, l);
}
int init_asphere_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  return rasterise(ASPHERE, N, *so, l);
}
int init_mzehnder_system(cpx* N, const struct_sysOptions* so, const struct_layer& l) {
  return rasterise(MZEHNDER, N, *so, l);
}
