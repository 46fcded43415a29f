// What a run is made of: slices, and the interfaces of what walks over them.
#pragma once

#include <climits>
#include <optional>

#include "system/grid.h"

// Whether a field is light still: neither zero everywhere nor infinite nor NaN somewhere.
enum class Health { kLight, kDark, kNotFinite };

// One slice of the run's arrays, [ny][nx] each.
struct Slice {
  cpx* E;
  double* F;
  const cpx* N;
  int stretch = -1;  // slices with the same number have the same N, to the bit; -1: not known

  // Where who made the slice knows them:
  std::optional<double> flux{};  // the sum of F
  std::optional<Health> health{};
  // Whether its stepper has E, too, and nobody has changed it here.
  bool is_as_made = false;
};

// What is looked at of a slice: which arrays, and the rows and columns of them.
struct SliceParts {
  bool E = false, F = false, N = false;
  bool flux = false;  // the sum of F
  int first_row = 0, end_row = INT_MAX;
  int first_column = 0, end_column = INT_MAX;
  bool health = false;
};

// What is asked of a step, beside the slice.
struct StepOrder {
  SliceParts parts;        // what the run will look at of it
  bool is_masked = false;  // whether masks that the stepper has adopted are laid over it
};

// Multiplies the field of a slice by something: an edge that absorbs, a screen. Applied to every
// slice before the sinks take it and before it is stepped from.
class FieldMask {
 public:
  virtual ~FieldMask() = default;
  virtual void apply(int k, cpx* E) = 0;
  // Whether it does anything to slice k.
  [[nodiscard]] virtual bool covers(int k) const = 0;
};

// Where slices live: a whole volume, or a rolling pair.
class Slices {
 public:
  virtual ~Slices() = default;
  // Slice k, its index painted. E and F of a slice that is asked for the first time are 0, those of
  // slice 0 the incident field. Valid until at(k + 2).
  virtual Slice at(int k) = 0;
  // Whether all slices stay, to be looked at behind the run.
  [[nodiscard]] virtual bool are_kept() const = 0;
};

// Makes a slice from the one before it. Made once for a run: it plans, owns its axes and stores.
class Stepper {
 public:
  virtual ~Stepper() = default;
  // Adds to to.E and to.F what from.E becomes across the step. from is left as it is.
  virtual void step(const Slice& from, const Slice& to) = 0;

  // Whether the stepper lays the mask, one that covers every slice behind a step, over its slices
  // itself, in the steps that are to be masked.
  virtual bool adopt(FieldMask& /*mask*/) { return false; }

  // The same step in two parts, for who has other work meanwhile. Behind begin, from is not looked
  // at any more; behind finish, those parts of to are made, and to tells what is known of it.
  virtual void begin(const Slice& from, const Slice& to, const StepOrder& /*order*/) {
    step(from, to);
  }
  virtual void finish(Slice& /*to*/) {}
  // While a step goes on elsewhere: the slices of the next one, of which the indices are known.
  virtual void look_ahead(const Slice& /*from*/, const Slice& /*to*/) {}
  // Whether steps are made elsewhere, on a device: behind begin they go on by themselves, and what
  // comes from there replaces what to has held.
  [[nodiscard]] virtual bool is_elsewhere() const { return false; }
  // Seconds that the last step went on between its parts.
  [[nodiscard]] virtual double seconds_between() const { return 0.0; }
  // All of E of a slice that finish left, this one or the one before, though a step is begun.
  virtual void bring_field(const Slice& /*slice*/) {}

  // How the last step summed its plane waves, as a user reads it: "direct sum", "transforms".
  [[nodiscard]] virtual const char* sum_taken() const = 0;
};
