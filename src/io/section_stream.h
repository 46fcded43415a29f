// A cross-section file that is written slice by slice.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "io/output_file.h"
#include "system/grid.h"
#include "wpm/sink.h"

// The numbers of a slice, so far apart; without a first one, all are 0.
struct SliceValues {
  const double* first = nullptr;
  int step = 1;
  double operator[](std::int64_t i) const { return first == nullptr ? 0.0 : first[i * step]; }
};

// The real parts; a complex number is two doubles in a row.
inline SliceValues real_parts(const cpx* slice) {
  return {reinterpret_cast<const double*>(slice), 2};
}

// Plane s across the axis that p leaves out, or with s = -1 all planes across z, of a square grid
// with voxels. The bytes are those of store_array, for every s. The file is opened by the first
// slice that is taken.
class SectionStream {
 public:
  SectionStream(std::string name, plane p, int s, const Grid& grid);

  // Whether the file shows anything of slice k; the others need not be taken.
  [[nodiscard]] bool shows(int k) const;
  // The rows and columns of a slice that it shows anything of.
  [[nodiscard]] SliceRequest required() const;
  // Slices come in order.
  void take(int k, const SliceValues& values);
  void finish();
  SinkState save();
  void restore(const SinkState& state);

 private:
  OutputFile& file();
  void write_sheet(const SliceValues& values, bool has_separators);
  void fill_row(std::int64_t row, const SliceValues& values, std::int64_t offset);
  void write_row();
  [[nodiscard]] bool is_row(std::int64_t row) const { return row >= 0 && row < slices_; }

  std::string name_;
  std::unique_ptr<OutputFile> file_;
  std::int64_t side_, samples_, slices_;  // of a slice's edge, of a slice, of the run
  bool is_across_z_;
  int s_;

  // Planes along z: row i begins in slice i + shift, at element `begin`, and takes every step-th.
  // It may run on into the next slice, since s is not held against any bound.
  std::int64_t step_ = 1, shift_ = 0, begin_ = 0;
  bool runs_on_ = false;
  std::int64_t written_ = 0;  // rows
  std::vector<double> row_;   // the row behind those, as far as it is known; empty if nothing is
};
