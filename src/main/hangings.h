// All that hangs on a march: where its slices go, and what is laid over them.
#pragma once

#include <memory>
#include <vector>

#include "io/io.h"
#include "main/branch.h"

// Makes the masks and monitors of a run. What is wrong with one ends the process with its line.
void make_hangings(Run& run);

// Those of one branch.
class Hangings {
 public:
  // Takes the run's masks, and its monitors where they get this branch's slices: the CPU's where
  // both run. A streamed run's files are among the sinks.
  Hangings(Run& run, Branch branch);

  [[nodiscard]] const std::vector<Sink*>& sinks() const { return sinks_; }
  [[nodiscard]] const std::vector<FieldMask*>& masks() const { return masks_; }

  // Flux of the first slice, where the profile is written on the way; else 0.
  [[nodiscard]] double flux_of_first() const;

  void go_back_to(Run& run, const RunState& state);

 private:
  void add_files(const Run& run, Branch branch);

  std::vector<std::unique_ptr<Sink>> files_;
  std::vector<Sink*> sinks_;
  std::vector<FieldMask*> masks_;
  FluxProfileSink* profile_ = nullptr;
};
