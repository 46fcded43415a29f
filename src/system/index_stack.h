// The layers as a stack along z, painted slice by slice.
#pragma once

#include <memory>
#include <vector>

#include "system/grid.h"
#include "system/stack_plan.h"

// A layer that takes no slices and acts on the field behind those before it.
struct Screen {
  int slice;  // the first slice that the next layer would take
  struct_layer layer;
};

// Walks the layers once, in order, and remembers where each begins; then paints any window of any
// slice on demand. Voxels that no layer writes are 0.
class IndexStack {
 public:
  // Prints a line for each layer unless is_quiet, and leaves so.izlast at the number of slices that
  // the layers take. Warns of slices that no layer paints. Layers are copied: so and layers need
  // not outlive the stack. A layer that cannot be painted ends the process.
  IndexStack(struct_sysOptions& so, const std::vector<struct_layer>& layers, bool is_quiet);
  ~IndexStack();
  IndexStack(const IndexStack&) = delete;
  IndexStack& operator=(const IndexStack&) = delete;

  // Paints the window into N, [window.slices()][window.rows()][nx]; replaces all of it.
  // Only whole volumes of grids that are not square are defined: their rows run into one another.
  void paint(cpx* N, const Window& window) const;

  // The same, but voxels that no layer writes keep what they hold.
  void paint_onto(cpx* N, const Window& window) const;

  // The volume, a size of 0 counted as 1 as the components do.
  [[nodiscard]] Window whole() const;

  // Number of the stretch of equal slices that slice k belongs to: slices of one stretch are next
  // to one another and have the same indices, to the bit. -1 outside the volume.
  [[nodiscard]] int stretch(int k) const;

  // In the order of the file.
  [[nodiscard]] const std::vector<Screen>& screens() const;

  // Where each layer is, in the order of the file.
  [[nodiscard]] const std::vector<LayerPlace>& places() const;

  // Sizes as the file has them, 0 included.
  [[nodiscard]] const Grid& grid() const;

 private:
  struct Inside;
  std::unique_ptr<Inside> inside_;
};
