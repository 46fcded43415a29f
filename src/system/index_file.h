// A volume of indices in a file, as a component.
#pragma once

#include <optional>
#include <vector>

#include "data/dataset.h"
#include "system/slab.h"
#include "system/system.h"

// Rounds the indices of a file, so that a step of the field has few pairs of indices. Up to as many
// values as there are levels are unchanged. Otherwise index and extinction are each rounded to that
// many values between least and largest. The phase error is then at most half an index step, in
// waves per wavelength of depth.
class Palette {
 public:
  explicit Palette(int levels) : levels_(levels) {}
  // Every value of the file, once.
  void see(const std::vector<cpx>& values);
  [[nodiscard]] bool is_exact() const { return seen_.size() <= static_cast<std::size_t>(levels_); }
  // Of index; 0 with one level.
  [[nodiscard]] double step() const;
  // is_sample: the value is a sample of the file, not a mean.
  [[nodiscard]] cpx round(const cpx& value, bool is_sample) const;

 private:
  int levels_;
  std::vector<cpx> seen_;  // in order, at most one more than the levels
  double least_n_ = 0, most_n_ = 0, least_k_ = 0, most_k_ = 0;
  bool is_empty_ = true;
};

// The data set of a layer and the positions of its samples.
class IndexVolume {
 public:
  // Opens the file. Throws Error if it cannot be used or its sampling is unknown.
  IndexVolume(const struct_sysOptions& so, const struct_layer& l);

  // In slices of the run, from its first one to the end of its last.
  [[nodiscard]] double depth() const;

  // The position of a slice, row or column of the run, in samples of the file.
  [[nodiscard]] double slice_of(int slice_of_layer) const;
  [[nodiscard]] double row_of(int iy) const;
  [[nodiscard]] double column_of(int ix) const;

  [[nodiscard]] const data::Dataset& set() const { return set_; }
  // Slice k as indices, [rows][columns].
  void read(int k, std::vector<cpx>& indices) const;

 private:
  Frame frame_;
  bool is_permittivity_;
  double offset_x_, offset_y_;  // m
  data::Dataset set_;
  data::Sampling sampling_;
};
