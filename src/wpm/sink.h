// Where slices leave the run.
#pragma once

#include <climits>
#include <string>

#include "wpm/slice.h"

// Where a sink is, as bytes that only it reads.
using Mark = std::string;

// What is looked at of a slice: which arrays, and their rows first_row to end_row - 1.
struct SliceParts {
  bool E = false, F = false, N = false;
  bool flux = false;  // the sum of F
  int first_row = 0, end_row = INT_MAX;
};

// A cross-section, a profile, a field file, a table. Slices come in order, each once.
class Sink {
 public:
  virtual ~Sink() = default;
  virtual void take(int k, const Slice& slice) = 0;
  // What take will look at of slice k; the rest need not be there. All, unless it says otherwise.
  [[nodiscard]] virtual SliceParts looks_at(int /*k*/) const { return {true, true, true, true}; }
  // Behind the last slice: writes what is left.
  virtual void finish() {}
  // For a checkpoint: brings what has been taken to the disk and says where it is.
  virtual Mark mark() = 0;
  // Continues, in a new process, where mark() was called: what the file holds beyond is cut off.
  virtual void go_back_to(const Mark& mark) = 0;
};
