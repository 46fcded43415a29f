// What a run is made of: slices, and the interfaces of what walks over them.
#pragma once

#include "system/grid.h"

// One slice of the run's arrays, [ny][nx] each.
struct Slice {
  cpx* E;
  double* F;
  const cpx* N;
  int stretch = -1;  // slices with the same number have the same N, to the bit; -1: not known
  const double* flux = nullptr;  // the sum of F, where somebody has worked it out
};

// Where slices live: a whole volume, or a rolling pair.
class Slices {
 public:
  virtual ~Slices() = default;
  // Slice k, its index painted. E and F of a slice that is asked for the first time are 0, those of
  // slice 0 the incident field. Valid until at(k + 2).
  virtual Slice at(int k) = 0;
};

// Makes a slice from the one before it. Made once for a run: it plans, owns its axes and stores.
class Stepper {
 public:
  virtual ~Stepper() = default;
  // Adds to to.E and to.F what from.E becomes across the step. from is left as it is.
  virtual void step(const Slice& from, const Slice& to) = 0;
  // How the last step summed its plane waves, as a user reads it: "direct sum", "transforms".
  [[nodiscard]] virtual const char* sum_taken() const = 0;
};

// Multiplies the field of a slice by something: an edge that absorbs, a screen. Applied to every
// slice before the sinks take it and before it is stepped from.
class FieldMask {
 public:
  virtual ~FieldMask() = default;
  virtual void apply(int k, cpx* E) = 0;
};
