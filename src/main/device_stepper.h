// The device's steps in the run's terms.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "kernel/kernel.h"
#include "wpm/edge.h"
#include "wpm/pair_runs.h"
#include "wpm/slice.h"

// How the device is to step.
struct DeviceChoice {
  bool is_fast = false;  // by transforms where pairs of indices are few, else by the direct sum
  bool is_TE = true;     // the device knows no third polarization
  int blockSize = 16;
};

// Steps on the device. The pairs of indices of a step are found and uploaded when its slices belong
// to another stretch than those of the last step; without stretches, in each step. Who looks ahead
// has them found while the device is at work. The field is taken from the host unless it is as the
// device made it.
//
// A failure is reported as the device branch reports one and ends the process with status 255.
class DeviceStepper : public Stepper {
 public:
  // The axes are those that init_X and init_F make of grid. On a grid without spacings transforms
  // don't serve, and the direct sum is taken.
  DeviceStepper(const Grid& grid, const StepOptions& options, const DeviceChoice& choice);

  // to is a fresh slice: what its E and F hold is replaced. All of it comes to the host.
  void step(const Slice& from, const Slice& to) override;
  // The absorbing edge.
  bool adopt(FieldMask& mask) override;
  // A step of which no part is wanted need not be finished, and does not wait for the device.
  void begin(const Slice& from, const Slice& to, const StepOrder& order) override;
  void finish(Slice& to) override;
  void look_ahead(const Slice& from, const Slice& to) override;
  [[nodiscard]] bool is_elsewhere() const override { return true; }
  [[nodiscard]] double seconds_between() const override { return seconds_between_; }
  void bring_field(const Slice& slice) override;
  [[nodiscard]] const char* sum_taken() const override;

 private:
  using Time = std::chrono::steady_clock::time_point;

  void tell(const device::Findings& found, Slice& slice) const;
  void find_pairs(const Slice& from, const Slice& to);
  void set_pairs(const Slice& from, const Slice& to);
  void require_success() const;

  std::size_t samples_;
  std::optional<device::SliceStepper> stepper_;  // none for a slice without samples
  const cpx* made_ = nullptr;                    // E of the slice that it has made, or is making
  SliceParts parts_;                             // wanted of it
  device::Survey survey_;
  EdgeMask* edge_ = nullptr;
  Time began_, begun_;  // when it was launched, and begin returned
  double seconds_between_ = 0;
  wpm::PairRuns runs_;
  bool are_others_ = false;                                // pairs than the device has: these
  std::vector<double2> n_i_, n_t_;                         // [pair]
  std::vector<std::uint32_t> places_;                      // [sample]: which pair
  const cpx *ahead_from_ = nullptr, *ahead_to_ = nullptr;  // indices whose pairs are found already
};
