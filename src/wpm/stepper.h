// Steppers: what makes a slice from the one before it. Several ranks make one each and call it
// together; their slices are the rows that they own, [own rows][nx], and nx = ny. All ranks take
// the same decisions.
#pragma once

#include <memory>
#include <optional>

#include "wpm/modes.h"
#include "wpm/slice.h"

// How a step summed its plane waves.
enum class Sum {
  kDirect,        // every plane wave at every sample
  kTransforms,    // one transform for each pair of indices
  kInterpolated,  // a few transforms for many pairs
  kKnown          // no sum: the field had become NaN everywhere
};
// As a user reads it: "direct sum", "transforms".
const char* name_of(Sum sum);

// What is known of a step and of its slice.
struct StepResult {
  Sum sum = Sum::kDirect;
  double seconds = 0;                 // of the step, without other work meanwhile
  std::optional<double> flux{};       // the sum of F, with the bits of adding up its samples
  std::optional<FieldState> state{};  // of E
  double taken = 0;                   // by the mask of the request: the sum of |E|^2
  double error = 0;  // the largest error of interpolation that samples have shown, relative to |E|
};

// Makes a slice from the one before it. Made once for a run: it plans, and owns its axes.
class Stepper {
 public:
  virtual ~Stepper() = default;
  // Starts a step, which adds to to.E and to.F what from.E becomes across it; a device replaces
  // them. The field of from is not read after that.
  virtual void start(const Slice& from, const Slice& to, const SliceRequest& request) = 0;
  // Ends it: those parts of to that were requested are on the host.
  virtual StepResult wait() = 0;
};

// The direct sum, the reference's: every plane wave at every sample. Same bits as zerith_3D, for
// any number of threads and of ranks. Plans at construction with FFTW_MEASURE; reads and rewrites
// the wisdom file. Cost of a step (nx*ny)^2.
std::unique_ptr<Stepper> make_direct_stepper(const Grid& grid, const StepOptions& options);

// The same sums by transforms: max|dE| stays within 1e-11 of max|E| over a hundred slices. For each
// pair of indices of a step, the plane waves' amplitudes after it form one spectrum, and one
// inverse transform sums them at all samples. A step with so many pairs that the direct sum is
// cheaper takes that, and so does one with infinities, NaN or enormous values. A grid without
// spacings, whose axes are no transform's, has the direct stepper. Cost of a step
// pairs * nx*ny*log(nx*ny).
//
// With a tolerance above 0 a step of many pairs may be summed by a few functions that represent all
// of them; see PairInterpolation. They are chosen so that the error of a step, its largest judged
// by its root mean square, stays within tolerance times the largest modulus of the field before it;
// if that is impossible, the pairs are summed one by one. Trimmed Fresnel coefficients change in
// steps of their own and are never interpolated.
std::unique_ptr<Stepper> make_fast_stepper(const Grid& grid, const StepOptions& options);
