// Where slices leave the run.
#pragma once

#include <span>
#include <string>

#include "wpm/slice.h"

// Where a sink is in its file, as bytes that only it reads.
using SinkState = std::string;

// A cross-section, a profile, a field file, a table. Slices come in order, each once.
class Sink {
 public:
  virtual ~Sink() = default;
  // What take reads of slice k; the rest may be missing. All by default.
  [[nodiscard]] virtual SliceRequest required(int /*k*/) const { return {true, true, true, true}; }
  virtual void take(int k, const Slice& slice) = 0;
  // After the last slice: writes what is left.
  virtual void finish() {}
  // For a checkpoint: brings what was taken to the disk.
  virtual SinkState save() = 0;
  // Continues, in a new process, after save(): what the file has beyond is cut off. Throws
  // TooFewBytes if the state is of something else.
  virtual void restore(const SinkState& state) = 0;
};

// What all sinks together require of slice k, in the smallest rectangle around their parts.
SliceRequest required_by(std::span<Sink* const> sinks, int k, const Grid& grid);
