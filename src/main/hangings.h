// Where the slices of a run go, and the masks that are applied to them.
#pragma once

#include <memory>
#include <vector>

#include "io/io.h"
#include "main/branch.h"

// Makes the masks and monitors of a run. What is wrong with one ends the process with its line.
void make_masks_and_monitors(Run& run);

// Those of one backend.
class RunOutputs {
 public:
  // Takes the run's masks, and its monitors if they get this backend's slices: the CPU's if
  // both run. A streamed run's files are among the sinks.
  RunOutputs(Run& run, Backend backend);

  [[nodiscard]] const std::vector<Sink*>& sinks() const { return sinks_; }
  [[nodiscard]] const std::vector<FieldMask*>& masks() const { return masks_; }

  // Flux of the first slice if the profile is written on the way; else 0.
  [[nodiscard]] double flux_of_first() const;

  void restore(Run& run, const RunState& state);

 private:
  void add_files(const Run& run, Backend backend);

  std::vector<std::unique_ptr<Sink>> files_;
  std::vector<Sink*> sinks_;
  std::vector<FieldMask*> masks_;
  FluxProfileSink* profile_ = nullptr;
};
