// Where the layers lie along z, before anything is painted.
#pragma once

#include <vector>

#include "system/description.h"

// The slices of one layer. A screen takes none, and a layer painted over another lies where that
// one does.
struct LayerPlace {
  bool is_known = true;  // false behind a file of indices, whose depth stands in that file
  bool is_stacked = true;
  double thickness = 0;  // in slices, not rounded
  double wanted = 0;     // rounded up to whole ones
  int first = 0;         // the slice that it begins at
  int taken = 0;         // cut at the end of the domain
};

std::vector<LayerPlace> plan_stack(const Description& d);
