#include <algorithm>

#include "diagnostics.h"
#include "log.h"
#include "wpm/wpm.h"

namespace {

using Rasteriser = int (*)(cpx*, const struct_sysOptions*, const struct_layer&);

struct Kind {
  const char* line;
  Rasteriser paint;
  component t;
  bool writes;
};

constexpr Kind kKinds[] = {
    {"create HOMOG ... ", init_homog_system, HOMOG, true},
    {"create GRATING ... ", init_grating_system, GRATING, true},
    {"create WGUIDE ... ", init_wguide_system, WGUIDE, true},
    {"create TAPER ... ", init_taper_system, TAPER, true},
    {"create LENS ... ", init_lens_system, LENS, true},
    {"create ASPHERE (not supported yet)", init_asphere_system, ASPHERE, false},
    {"create SPLITTER ... ", init_splitter_system, SPLITTER, true},
    {"MZEHNDER (not supported yet)", init_mzehnder_system, MZEHNDER, false},
};

void warn_of_unpainted(const struct_sysOptions& so, const std::vector<bool>& is_painted) {
  const auto count = std::count(is_painted.begin(), is_painted.end(), false);
  if (count > 0)
    diagnostics::warn(so.sysname + ": the layers leave " + std::to_string(count) + " of " +
                      std::to_string(so.nz) + " slices unwritten; they hold index 0");
}

}  // namespace

void init_N(cpx* N, struct_sysOptions* so, const std::vector<struct_layer>* layers, bool is_quiet) {
  const Log log(is_quiet);
  std::vector<bool> is_painted(static_cast<std::size_t>(std::max(so->nz, 0)), false);
  so->izlast = 0;
  int number = 0;
  for (const struct_layer& l : *layers) {
    ++number;
    const Kind* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                    [&l](const Kind& candidate) { return candidate.t == l.t; });
    if (kind == std::end(kKinds)) {
      log << "\t\t\t\t\033[31mUnknown component\033[0m" << std::endl;
      continue;
    }
    log << "\t\t\t\t" << kind->line << std::endl;
    if (l.t == GRATING) require_grating_periods(so, l, number);
    const int slices = kind->paint(N, so, l);
    if (kind->writes)
      for (int iz = std::max(so->izlast, 0); iz < std::min(so->izlast + slices, so->nz); ++iz)
        is_painted[static_cast<std::size_t>(iz)] = true;
    so->izlast += slices;
  }
  warn_of_unpainted(*so, is_painted);
}
