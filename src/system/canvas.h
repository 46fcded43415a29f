// The target of painting: the index volume or a window of it.
#pragma once

#include <algorithm>
#include <cstdint>

#include "system/grid.h"
#include "system/slab.h"

class Canvas {
 public:
  // N is [window.slices()][window.rows()][nx]. The row step is ny on grids that are not square: the
  // index volume is defined so. Rows then overlap or leave gaps, and the window must be the whole
  // volume.
  Canvas(cpx* N, const Frame& frame, const Window& window)
      : N_(N),
        window_(window),
        nx_(frame.nx),
        row_step_(frame.ny),
        slice_step_(std::int64_t{frame.nx} * window.rows()),
        count_(slice_step_ * window.slices()) {}

  // The rows to paint.
  [[nodiscard]] int first_row() const { return window_.y_begin; }
  [[nodiscard]] int end_row() const { return window_.y_end; }

  // Samples begin..end-1 of a row that are in the array.
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
    const std::int64_t origin = (std::int64_t{iz} - window_.z_begin) * slice_step_ +
                                (std::int64_t{iy} - window_.y_begin) * row_step_;
    const std::int64_t begin = std::clamp<std::int64_t>(-origin, 0, nx_);
    const std::int64_t end = std::clamp<std::int64_t>(count_ - origin, begin, nx_);
    cpx* voxels = begin < end ? N_ + (origin + begin) : nullptr;
    return {voxels, static_cast<int>(begin), static_cast<int>(end)};
  }

 private:
  cpx* N_;
  Window window_;
  std::int64_t nx_;
  std::int64_t row_step_;
  std::int64_t slice_step_;
  std::int64_t count_;
};
