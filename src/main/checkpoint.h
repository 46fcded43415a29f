// Where a stopped run goes on.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "wpm/edge.h"
#include "wpm/march.h"

// Which of a run's two propagations.
enum class Branch { kDevice, kCpu };

// A run behind one of its slices.
struct RunState {
  Branch branch = Branch::kCpu;
  int slice = 0;              // the last one that the sinks have
  double step_seconds = 0;    // spent on steps so far
  double taken_by_edge = 0;   // light that the absorbing edge has taken, W-like: |E|^2 dx dy
  std::vector<Mark> marks;    // of the sinks, in order
  std::vector<cpx> E;         // the slice, [ny][nx]
  std::string wisdom;         // of FFTW in double precision: a plan that is measured anew may
  std::string wisdom_single;  //   differ in the last bit
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

// Writes checkpoints when they are due, and ends the process behind the slice in which a signal
// came: with a checkpoint, if the run has one, and with all that the sinks have on the disk.
class StopWatch : public SliceWatcher {
 public:
  // file: "" for none. step_seconds: what the march has spent, kept up to date by it.
  StopWatch(std::string file, std::string identity, double every_seconds, Branch branch,
            const Grid& grid, std::span<Sink* const> sinks, const double& step_seconds,
            const EdgeMask* edge);
  bool wants_field(int k) override;
  void slice_done(int k, const Slice& slice) override;

 private:
  void write(int k, const Slice& slice);

  std::string file_, identity_;
  std::chrono::duration<double> every_;
  Branch branch_;
  const Grid& grid_;
  std::span<Sink* const> sinks_;
  const double& step_seconds_;
  const EdgeMask* edge_;  // null without an edge
  bool is_due_ = false;
  int signal_ = 0;  // that came before the slice at hand was done
  std::chrono::steady_clock::time_point written_ = std::chrono::steady_clock::now();
};
