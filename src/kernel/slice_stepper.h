// Steps from slice to slice on the device, where only planes are kept. Host pointers throughout.
#pragma once

#include <cuda_runtime.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace device {

// One axis of a slice: n frequencies, in transform order, rad/m, and positions, centred, m.
struct SliceAxis {
  int n;
  const double* frequencies;
  const double* positions;
};

// The distinct pairs of indices of a step, and which of them each sample has.
struct StepPairs {
  int count;
  const double2* n_i;            // [count] before the step
  const double2* n_t;            // [count] behind it
  const std::uint32_t* samples;  // [ny][nx]
};

struct StepperOptions {
  double k0, dz;  // rad/m, m
  bool do_evanescent_modes = true;
  bool is_magnetic_field = false;
  bool is_TE = true;
  bool is_trimmed = true;  // transmission, onto a grid of 0.0001

  // By transforms, one for each pair, where they are fewer than two samples in five; the axes must
  // be those of one spacing each. Otherwise by the direct sum, whose bits are those of the direct
  // kernel of volumes.
  bool is_fast = false;
  // Edge of the direct kernel's blocks: what a launch of it does not cover of a grid that is not
  // square stays zero here too, and outside of 1 to 32 a step fails as a launch of it does.
  int blockSize = 16;

  // Device memory for the planes of pairs that are transformed together, and for what depends on
  // pairs alone: with less, more is done in turn, or again in each step.
  std::size_t plane_bytes = std::size_t{256} << 20U;
  std::size_t transfer_bytes = std::size_t{256} << 20U;
};

// What the device could not do: the runtime's error number, 0 if it is the transform library's, and
// a text without its end.
struct Failure {
  int number;
  std::string text;
};

// What is done to a slice that is made.
struct Survey {
  bool flux = false;      // the sum of F
  bool health = false;    // whether E is finite, and light anywhere
  bool has_edge = false;  // E is multiplied by the factors of the edge
};

struct Findings {
  double flux = 0;
  double taken = 0;  // by the edge: the sum of |E|^2 before it less that behind
  bool is_finite = true, is_light = true;
};

// Rows and columns of a slice; ends beyond it are its own.
struct Rectangle {
  int first_row = 0, end_row = INT_MAX;
  int first_column = 0, end_column = INT_MAX;
};

// Made once for a run: it plans, and owns its planes. E of the slice that is stepped from stays on
// the device. A step of the pairs of the last one copies nothing, allocates nothing and does not
// wait for the device; what it does there may still be going on when it returns.
class SliceStepper {
 public:
  SliceStepper(const SliceAxis& x, const SliceAxis& y, const StepperOptions& options);
  ~SliceStepper();
  SliceStepper(const SliceStepper&) = delete;
  SliceStepper& operator=(const SliceStepper&) = delete;

  // The field to step from, [ny][nx].
  void set_field(const double2* E);
  // The pairs of the steps to come. What depends on them alone is worked out here; what is the same
  // as before is not.
  void set_pairs(const StepPairs& pairs);
  // What the edge multiplies E by, a factor for each column, [nx], and for each row, [ny].
  void set_edge(const double* of_columns, const double* of_rows);
  // Makes the next slice and surveys it; it is the one to step from then.
  void step(const Survey& survey = {});

  // These wait for the device. Of the slice that was made, to the host, [ny][nx] each: a rectangle,
  // what lies around it being left as it is; a null pointer is left out.
  void fetch(double2* E, double* F, const Rectangle& part = {});
  // E of the slice that was stepped from last.
  void fetch_last(double2* E);
  // What the survey of the last step found.
  [[nodiscard]] Findings findings();
  // Seconds of the device for the last step.
  [[nodiscard]] double step_seconds();

  // Whether the last step summed by transforms.
  [[nodiscard]] bool is_by_transforms() const;

  // The first failure, or null. Behind it all other calls are without effect.
  [[nodiscard]] const Failure* failure() const;

 private:
  struct Inside;
  std::unique_ptr<Inside> inside_;
};

}  // namespace device
