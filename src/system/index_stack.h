// The layers as a stack along z, painted slice by slice.
#pragma once

#include <memory>
#include <vector>

#include "system/grid.h"
#include "system/stack_plan.h"

// A layer without slices that acts on the field after the layers before it.
struct Screen {
  int slice;  // the first slice of the next layer
  struct_layer layer;
};

// Visits the layers once, in order, and stores where each begins. Then paints any window of any
// slice on demand. Voxels that no layer writes are 0.
class IndexStack {
 public:
  // Prints a line for each layer unless is_quiet. Sets so.izlast to the number of slices of the
  // layers. Warns of slices that no layer paints. Copies the layers: so and layers need not outlive
  // the stack. Throws Error if a layer cannot be painted.
  IndexStack(struct_sysOptions& so, const std::vector<struct_layer>& layers, bool is_quiet);
  ~IndexStack();
  IndexStack(const IndexStack&) = delete;
  IndexStack& operator=(const IndexStack&) = delete;

  // Paints the window into N, [window.slices()][window.rows()][nx]; replaces all of it. Grids that
  // are not square need the whole volume: their rows overlap.
  void paint(cpx* N, const Window& window) const;

  // The same, but voxels that no layer writes are unchanged.
  void paint_onto(cpx* N, const Window& window) const;

  // The volume; a size of 0 counts as 1, as in the components.
  [[nodiscard]] Window whole() const;

  // The number of the uniform segment of slice k; -1 outside the volume. Slices of a segment are
  // adjacent and have bit-identical indices.
  [[nodiscard]] int stretch(int k) const;

  // In the order of the file.
  [[nodiscard]] const std::vector<Screen>& screens() const;

  // Where each layer is, in the order of the file.
  [[nodiscard]] const std::vector<LayerPlace>& places() const;

  // Sizes of the file, 0 included.
  [[nodiscard]] const Grid& grid() const;

 private:
  struct Inside;
  std::unique_ptr<Inside> inside_;
};
