// The positions of the layers along z.
#pragma once

#include <optional>
#include <vector>

#include "system/description.h"
#include "system/slab.h"

// The slices of one layer. A screen takes none.
struct LayerPlace {
  Slab slab;               // cut at the end of the domain
  double thickness = 0;    // in slices, not rounded
  double wanted = 0;       // rounded up to whole slices
  bool is_stacked = true;  // the next layer begins after it
  bool is_known = true;    // false for an index file whose depth was not read
};

// Places layers one after the other. A layer painted over the one before it begins at the same
// slice. It takes its own number of slices, or all of that layer's if it has no thickness.
class LayerStack {
 public:
  // opens_files: opens an index file that sets the thickness of its layer; throws Error if it
  // cannot.
  LayerStack(const struct_sysOptions& so, bool opens_files);

  LayerPlace add(const struct_layer& l);

  [[nodiscard]] int next_slice() const { return so_.izlast; }
  // Whether there is a layer to paint over.
  [[nodiscard]] bool has_base() const { return base_.has_value(); }

 private:
  [[nodiscard]] LayerPlace place_alone(const struct_layer& l, int start);

  struct_sysOptions so_;
  bool opens_files_;
  bool is_known_ = true;
  std::optional<LayerPlace> base_;
};

// All layers of a description, without reading files.
std::vector<LayerPlace> plan_stack(const Description& d);
