// Where a stopped run resumes.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "wpm/edge.h"
#include "wpm/march.h"

// Which of a run's two propagations.
enum class Backend { kDevice, kCpu };

// A run after one of its slices.
struct RunState {
  Backend backend = Backend::kCpu;
  int slice = 0;                 // the last one that the sinks have
  double step_seconds = 0;       // spent on steps so far
  double taken_by_edge = 0;      // light that the absorbing edge has taken, W-like: |E|^2 dx dy
  std::vector<SinkState> sinks;  // in order
  std::vector<cpx> E;            // the slice, [ny][nx]
  std::string wisdom;            // of FFTW in double precision: a plan that is measured anew may
  std::string wisdom_single;     //   differ in the last bit
};

// The state in file, if there is one. A file of another run (identity: a hash of all that the
// results depend on), another version or one that is damaged throws Error.
std::optional<RunState> read_checkpoint(const std::string& file, const std::string& identity);

// Writes beside the file, to the disk, and renames over it. Failure is an error message; the old
// file stays.
void write_checkpoint(const std::string& file, const std::string& identity, const RunState& state);

// As long as it lives, SIGINT and SIGTERM wait for the end of a slice; a second one ends the
// process at once.
class HeldSignals {
 public:
  HeldSignals();
  ~HeldSignals();  // and act at once again, unless an error ends the run
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;
};

// Writes checkpoints when they are due, and ends the process after the slice in which a signal
// came: with a checkpoint, if the run has one, and with all that the sinks have on the disk.
class Checkpointer : public SliceObserver {
 public:
  // file: "" for none. step_seconds: those spent, kept up to date by the propagation.
  Checkpointer(std::string file, std::string identity, double every_seconds, Backend backend,
               const Grid& grid, std::span<Sink* const> sinks, const double& step_seconds,
               const EdgeMask* edge);
  bool requires_field(int k) override;
  void slice_done(int k, const Slice& slice, const StepResult& step) override;

 private:
  void write(int k, const Slice& slice);

  std::string file_, identity_;
  std::chrono::duration<double> every_;
  Backend backend_;
  const Grid& grid_;
  std::span<Sink* const> sinks_;
  const double& step_seconds_;
  const EdgeMask* edge_;  // null without an edge
  bool is_due_ = false;
  int signal_ = 0;  // that came before the slice at hand was done
  std::chrono::steady_clock::time_point written_ = std::chrono::steady_clock::now();
};
