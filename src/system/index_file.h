// A volume of indices in a file, as a component.
#pragma once

#include <optional>
#include <vector>

#include "data/dataset.h"
#include "system/slab.h"
#include "system/system.h"

// The steps that indices from a file are rounded to, so that few pairs of indices meet in a step of
// the field. As many values as there are levels or fewer stand as they are. Otherwise index and
// extinction each go to the nearest of so many values between the least and the largest: light then
// errs by half a step of index, in waves for each wavelength of depth, at most.
class Palette {
 public:
  explicit Palette(int levels) : levels_(levels) {}
  // Every value of the file, once.
  void see(const std::vector<cpx>& values);
  [[nodiscard]] bool is_exact() const { return seen_.size() <= static_cast<std::size_t>(levels_); }
  // Of index; 0 with one level.
  [[nodiscard]] double step() const;
  // is_sample: the value stands in the file, and is not a mean of those there.
  [[nodiscard]] cpx round(const cpx& value, bool is_sample) const;

 private:
  int levels_;
  std::vector<cpx> seen_;  // in order, up to one more than there are levels
  double least_n_ = 0, most_n_ = 0, least_k_ = 0, most_k_ = 0;
  bool is_empty_ = true;
};

// The data set of a layer and where its samples lie.
class IndexVolume {
 public:
  // Opens the file. Ends the process if it cannot be used, or nothing says how it is sampled.
  IndexVolume(const struct_sysOptions& so, const struct_layer& l);

  // In slices of the run, from its first one to the end of its last.
  [[nodiscard]] double depth() const;

  // Where slice, row and column of the run lie in the file, counted in its samples.
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
