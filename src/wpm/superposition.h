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

// Adds the plane waves to every sample, in their order, by all threads; each thread has
// samples of its own, so their number changes no bit. Cost waves * nx * ny.
void superpose(const std::vector<PlaneWave>& waves, const StepOptions& options,
               const SliceStep& slice);

// Of the waves of a spectrum that is NaN as a whole, samples plane waves, leaves the few that make
// the sum NaN at every sample of every pair, whatever the others are, from both ends: the sign of a
// NaN, which files show, is that of the first or the last. Returns whether it did; other spectra
// stay as they are.
bool keep_what_decides(std::vector<PlaneWave>& waves, std::size_t samples,
                       const std::vector<IndexPair>& pairs, const StepOptions& options);
