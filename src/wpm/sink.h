// Where slices leave the run.
#pragma once

#include <string>

#include "wpm/slice.h"

// Where a sink is, as bytes that only it reads.
using Mark = std::string;

// A cross-section, a profile, a field file, a table. Slices come in order, each once.
class Sink {
 public:
  virtual ~Sink() = default;
  virtual void take(int k, const Slice& slice) = 0;
  // Behind the last slice: writes what is left.
  virtual void finish() {}
  // For a checkpoint: brings what has been taken to the disk and says where it is.
  virtual Mark mark() = 0;
  // Continues, in a new process, where mark() was called: what the file holds beyond is cut off.
  virtual void go_back_to(const Mark& mark) = 0;
};
