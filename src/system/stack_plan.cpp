#include "system/stack_plan.h"

#include <cmath>

#include "system/slab.h"

std::vector<LayerPlace> plan_stack(const Description& d) {
  struct_sysOptions so = d.so;
  so.izlast = 0;
  const Frame frame(so);
  std::vector<LayerPlace> places;
  bool is_known = true;
  for (const struct_layer& l : d.layers) {
    LayerPlace place;
    if (l.over && !places.empty()) {
      place = places.back();
      place.is_stacked = false;
    } else if (l.t == SCREEN) {
      place.is_stacked = false;
      place.first = so.izlast;
    } else {
      if (l.t == INDEX_FILE && l.z == 0) is_known = false;
      // The spacing as the layer's rasteriser takes it: the quotients may round apart.
      place.thickness = l.z / (l.t == LENS ? so.dz : frame.dz / frame.metres);
      place.wanted = std::ceil(place.thickness);
      place.first = so.izlast;
      place.taken = Slab(so, place.thickness).taken;
      so.izlast += place.taken;
    }
    place.is_known = is_known;
    places.push_back(place);
  }
  return places;
}
