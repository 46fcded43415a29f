// What a run is made of: slices, and the interfaces of what works on them.
#pragma once

#include <climits>
#include <span>

#include "system/grid.h"

// Whether a field is light still: neither zero everywhere nor infinite nor NaN somewhere.
enum class FieldState { kLight, kDark, kNotFinite };

// One slice of the run's arrays, [ny][nx] each.
struct Slice {
  cpx* E;
  double* F;
  const cpx* N;
  int segment = -1;        // slices of one uniform segment have the same N, to the bit; -1: unknown
  double flux = 0;         // the sum of F, of a slice of which it is required
  bool on_device = false;  // the device's copy of E is valid
};

// Multiplies the field of a slice by something: an absorbing edge, a screen. Applied to a slice
// before the sinks take it and before the next step.
class FieldMask {
 public:
  virtual ~FieldMask() = default;
  virtual void apply(int k, cpx* E) = 0;
  // Whether it changes slice k.
  [[nodiscard]] virtual bool covers(int k) const = 0;

  // A mask that is the product of a factor for each column, [nx], and one for each row, [ny], for a
  // device that applies it; no columns if it is no such product.
  struct Factors {
    std::span<const double> columns, rows;
  };
  [[nodiscard]] virtual Factors factors() const { return {}; }
  // Adds what a device took from a slice by the factors, the sum of |E|^2.
  virtual void add_taken(double /*sum*/) {}
};

// What is required of a slice: arrays, and the rows and columns of them.
struct SliceRequest {
  bool E = false, F = false, N = false;
  bool flux = false;  // the sum of F
  int first_row = 0, end_row = INT_MAX;
  int first_column = 0, end_column = INT_MAX;
  bool state = false;               // the state of the field
  const FieldMask* mask = nullptr;  // applied by an asynchronous stepper
};

// The part of an asynchronous stepper that Slices use: its copies of the field.
class SliceDevice {
 public:
  virtual ~SliceDevice() = default;
  // Copies all of E of the slice that was made last, or of the one before, to the host. A step may
  // be under way.
  virtual void fetch_field(const Slice& slice) = 0;
  // Prepares the step between two slices whose N is known. A step may be under way.
  virtual void prefetch(const Slice& from, const Slice& to) = 0;
};

// The slices of a run, a whole volume or a rolling pair, and which copies of their fields are
// valid.
class Slices {
 public:
  // device: of the stepper that makes the slices; null on the host.
  explicit Slices(SliceDevice* device = nullptr) : device_(device) {}
  virtual ~Slices() = default;
  Slices(const Slices&) = delete;
  Slices& operator=(const Slices&) = delete;

  // Slice k, its index painted: the newest one, the one before or the next. E and F of a new slice
  // are 0, or anything if a device replaces them; those of slice 0 are the incident field. Valid
  // until at(k + 2).
  Slice at(int k);
  // Whether all slices stay until the end of the run.
  [[nodiscard]] virtual bool are_kept() const = 0;
  // Samples of a slice.
  [[nodiscard]] virtual std::size_t samples() const = 0;
  // Whether steps continue on a device after they are started.
  [[nodiscard]] bool is_async() const { return device_ != nullptr; }

  // Slice k was made. If by a device, the host has all of E or only a part of it.
  void set_made(int k, bool is_whole_on_host);
  // All of E of slice k, on the host.
  cpx* fetch_field(int k);
  // The same to be changed, which leaves the device's copy invalid.
  cpx* change_field(int k);

 protected:
  [[nodiscard]] SliceDevice* device() const { return device_; }

 private:
  struct Copies {
    bool on_host = true, on_device = false;
  };
  // Slice k as at() describes it; is_new the first time.
  virtual Slice slice(int k, bool is_new) = 0;
  Copies& copies(int k) { return copies_[k % 2]; }

  SliceDevice* device_;
  Copies copies_[2];  // of the newest slice and of the one before
  int newest_ = -1;
};
