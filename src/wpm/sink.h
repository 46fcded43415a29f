// Where slices leave the run.
#pragma once

#include <span>
#include <string>

#include "wpm/slice.h"

// Where a sink is, as bytes that only it reads.
using Mark = std::string;

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

// What sinks together look at of slice k: the smallest rectangle that holds the parts of all.
SliceParts looked_at(std::span<Sink* const> sinks, int k, const Grid& grid);
