// The steppers of the CPU. Several ranks make one each and call it together; their slices are the
// rows that they own, [own rows][nx], and nx = ny. All ranks take the same decisions.
#pragma once

#include <memory>

#include "wpm/modes.h"
#include "wpm/slice.h"

// How many steps were summed which way.
struct SumCounts {
  int direct = 0;        // every plane wave at every sample
  int transforms = 0;    // one transform for each pair of indices
  int interpolated = 0;  // a few transforms for many pairs
  int known = 0;         // no sum: the field had become NaN everywhere
};

// A stepper that tells how it worked.
class CpuStepper : public Stepper {
 public:
  [[nodiscard]] virtual SumCounts counts() const = 0;
  // Of steps whose pairs were interpolated: the largest difference from the exact sum that was
  // found at a few random samples now and then, over the largest modulus of the field.
  [[nodiscard]] virtual double error_found() const { return 0.0; }
};

// The direct sum, the reference's: every plane wave at every sample. Same bits as zerith_3D, for
// any number of threads and of ranks. Plans at construction with FFTW_MEASURE; reads and rewrites
// the wisdom file. Cost of a step (nx*ny)^2.
std::unique_ptr<CpuStepper> make_direct_stepper(const Grid& grid, const StepOptions& options);

// The same sums by transforms: max|dE| stays within 1e-11 of max|E| over a hundred slices. For each
// pair of indices that a step holds, the plane waves' amplitudes behind it form one spectrum, and
// one inverse transform sums them at all samples. A step with so many pairs that the direct sum is
// cheaper takes that, and so does one with infinities, NaN or enormous values. A grid without
// spacings, whose axes are no transform's, has the direct stepper. Cost of a step
// pairs * nx*ny*log(nx*ny).
//
// With a tolerance above 0 a step of many pairs may be summed by a few functions that stand for all
// of them; see PairInterpolation. They are chosen so that the error of a step, its largest judged
// by its root mean square, stays within tolerance times the largest modulus of the field that it is
// stepped from; where that cannot be had, the pairs are summed one by one. Trimmed Fresnel
// coefficients change in steps of their own and are never interpolated.
std::unique_ptr<CpuStepper> make_fast_stepper(const Grid& grid, const StepOptions& options);
