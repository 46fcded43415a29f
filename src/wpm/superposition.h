// The direct sum: every plane wave at every sample.
#pragma once

#include "wpm/modes.h"

// One slice of the field being built, and what it is built from. All arrays [ny][nx] but X, [nx],
// and Y, [ny].
struct SliceStep {
  cpx* E;          // slice k+1: terms are added
  double* F;       // slice k+1: terms are added
  const cpx* N_i;  // index of slice k
  const cpx* N_t;  // index of slice k+1
  const double* X;
  const double* Y;
  int ny, nx;
};

// Adds the plane waves to every sample, in their order, by all OpenMP threads; each thread has
// samples of its own, so their number changes no bit. Cost waves * nx * ny.
void superpose(const std::vector<PlaneWave>& waves, const StepOptions& options,
               const SliceStep& slice);
