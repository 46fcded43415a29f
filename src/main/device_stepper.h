// The device's steps in the run's terms.
#pragma once

#include <optional>
#include <vector>

#include "kernel/kernel.h"
#include "wpm/index_pairs.h"
#include "wpm/slice.h"

// How the device is to step.
struct DeviceChoice {
  bool is_fast = false;  // by transforms where pairs of indices are few, else by the direct sum
  bool is_TE = true;     // the device knows no third polarization
  int blockSize = 16;
  // Nothing, no mask above all, changes E between steps: it is taken from the host once.
  bool field_stays = false;
};

// Steps on the device. The pairs of indices of a step are found and uploaded when its slices belong
// to another stretch than those of the last step; without stretches, in each step.
//
// A failure is reported as the device branch reports one and ends the process with status 255.
class DeviceStepper : public Stepper {
 public:
  // The axes are those that init_X and init_F make of grid. On a grid without spacings transforms
  // don't serve, and the direct sum is taken.
  DeviceStepper(const Grid& grid, const StepOptions& options, const DeviceChoice& choice);

  // to is a fresh slice: what its E and F hold is replaced.
  void step(const Slice& from, const Slice& to) override;
  [[nodiscard]] const char* sum_taken() const override;

  // What the next steps bring to the host; both at first. A step that brings nothing does not wait
  // for the device.
  void fetch(bool E, bool F) { fetches_E_ = E, fetches_F_ = F; }

 private:
  void set_pairs(const Slice& from, const Slice& to);
  void require_success() const;

  std::size_t samples_;
  bool field_stays_;
  std::optional<device::SliceStepper> stepper_;  // none for a slice without samples
  const cpx* made_ = nullptr;                    // E of the slice that the device has made
  int stretch_from_ = -1, stretch_to_ = -1;
  bool fetches_E_ = true, fetches_F_ = true;
  IndexPairs found_;
  std::vector<double2> n_i_, n_t_;
};
