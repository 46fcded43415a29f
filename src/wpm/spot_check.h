// The sum over all plane waves at a sample, exact.
#pragma once

#include "wpm/binned_spectrum.h"
#include "wpm/transfer.h"

namespace wpm {

// The field behind the step at row j, sample i, all of whose pair is the transfer function's.
// Cost: a term for each plane wave.
cpx field_at(int j, int i, const BinnedSpectrum& spectrum, const Transfer& transfer, const Axis& x,
             const Axis& y);

}  // namespace wpm
