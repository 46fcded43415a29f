// Where components paint: the index volume or a window of it.
#pragma once

#include <algorithm>
#include <cstdint>

#include "system/grid.h"
#include "system/slab.h"

class Canvas {
 public:
  // N is [window.slices()][ny][window.columns()]. The row step is ny on grids that are not square:
  // the index volume is defined so, and the rows overlap or leave gaps. The window must then be
  // the whole volume.
  Canvas(cpx* N, const Frame& frame, const Window& window)
      : N_(N),
        window_(window),
        row_step_(frame.is_square() ? window.columns() : frame.ny),
        slice_step_(std::int64_t{window.columns()} * frame.ny),
        count_(slice_step_ * window.slices()) {}

  // Samples begin..end-1 of a row, as far as they lie in the window and in the array.
  class Row {
   public:
    Row(cpx* voxels, int begin_, int end_) : begin(begin_), end(end_), voxels_(voxels) {}
    cpx& operator[](int ix) const { return voxels_[ix - begin]; }
    void fill(const cpx& material) const {
      if (begin < end) std::fill_n(voxels_, end - begin, material);
    }
    int begin, end;

   private:
    cpx* voxels_;
  };

  // Row iy of slice iz.
  [[nodiscard]] Row row(int iz, int iy) const {
    const std::int64_t origin =
        (std::int64_t{iz} - window_.z_begin) * slice_step_ + std::int64_t{iy} * row_step_;
    const auto columns = std::int64_t{window_.columns()};
    const std::int64_t begin = std::clamp<std::int64_t>(-origin, 0, columns);
    const std::int64_t end = std::clamp<std::int64_t>(count_ - origin, begin, columns);
    cpx* voxels = begin < end ? N_ + (origin + begin) : nullptr;
    return {voxels, static_cast<int>(begin) + window_.x_begin,
            static_cast<int>(end) + window_.x_begin};
  }

 private:
  cpx* N_;
  Window window_;
  std::int64_t row_step_;
  std::int64_t slice_step_;
  std::int64_t count_;
};
