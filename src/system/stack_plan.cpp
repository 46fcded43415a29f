#include "system/stack_plan.h"

#include <cmath>

#include "system/rule.h"

LayerStack::LayerStack(const struct_sysOptions& so, bool opens_files)
    : so_(so), opens_files_(opens_files) {
  so_.izlast = 0;
}

LayerPlace LayerStack::place_alone(const struct_layer& l, int start) {
  const Kind* kind = kind_of(l.t);
  const bool is_of_unknown_depth = l.t == INDEX_FILE && l.z == 0 && !opens_files_;
  if (is_of_unknown_depth) is_known_ = false;
  const double thickness = kind == nullptr || is_of_unknown_depth ? 0 : kind->thickness(so_, l);
  struct_sysOptions so = so_;
  so.izlast = start;
  return {Slab(so, thickness), thickness, std::ceil(thickness), true, is_known_};
}

LayerPlace LayerStack::add(const struct_layer& l) {
  if (l.over && base_) {
    const LayerPlace alone = place_alone(l, base_->slab.start);
    LayerPlace place = *base_;
    if (alone.slab.taken > 0 && alone.slab.taken < place.slab.taken) place.slab = alone.slab;
    place.is_stacked = false;
    place.is_known = is_known_;
    return place;
  }
  LayerPlace place = place_alone(l, so_.izlast);
  // There is no layer below: the run is refused.
  if (l.t == SCREEN || kind_of(l.t) == nullptr || l.over) {
    place.is_stacked = false;
    return place;
  }
  base_ = place;
  so_.izlast += place.slab.taken;
  return place;
}

std::vector<LayerPlace> plan_stack(const Description& d) {
  LayerStack stack(d.so, false);
  std::vector<LayerPlace> places;
  for (const struct_layer& l : d.layers) places.push_back(stack.add(l));
  return places;
}
