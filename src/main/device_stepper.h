// The device's steps in the run's terms.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "kernel/kernel.h"
#include "wpm/pair_runs.h"
#include "wpm/stepper.h"

// How the device is to step.
struct DeviceChoice {
  bool is_fast = false;  // by transforms if pairs of indices are few, else by the direct sum
  bool is_TE = true;     // the device knows no third polarization
  int blockSize = 16;
};

// Steps on the device. The pairs of indices of a step are found and uploaded if its slices are of
// other uniform segments than those of the last step; without segments, in each step. prefetch
// finds them while the device is at work. The field is uploaded unless the device has it.
//
// A failure is reported as the device branch reports one and ends the process with status 255.
class DeviceStepper : public Stepper, public SliceDevice {
 public:
  // The axes are those that init_X and init_F make of grid. On a grid without spacings transforms
  // don't serve, and the direct sum is taken.
  DeviceStepper(const Grid& grid, const StepOptions& options, const DeviceChoice& choice);

  // Returns before the step is done. A step of which nothing is requested needs no wait.
  void start(const Slice& from, const Slice& to, const SliceRequest& request) override;
  StepResult wait() override;

  void fetch_field(const Slice& slice) override;
  void prefetch(const Slice& from, const Slice& to) override;

 private:
  using Time = std::chrono::steady_clock::time_point;

  void set_mask(const FieldMask& mask);
  void find_pairs(const Slice& from, const Slice& to);
  void set_pairs(const Slice& from, const Slice& to);
  void require_success() const;

  std::size_t samples_;
  std::optional<device::SliceStepper> stepper_;  // none for a slice without samples
  Slice made_{};                                 // the slice that it has made, or is making
  SliceRequest request_;                         // of it
  device::Survey survey_;
  const FieldMask* mask_ = nullptr;  // of which the device has the factors
  Time launched_, started_;          // when the step was launched, and start returned
  std::chrono::duration<double> seconds_to_start_{};
  wpm::PairRuns runs_;
  bool are_others_ = false;                              // pairs than the device has: these
  std::vector<double2> n_i_, n_t_;                       // [pair]
  std::vector<std::uint32_t> places_;                    // [sample]: which pair
  const cpx *next_from_ = nullptr, *next_to_ = nullptr;  // indices whose pairs are found already
};
