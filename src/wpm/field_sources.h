// Waves that are not given by a formula of a line: a mode of a fibre, a field from a file.
#pragma once

#include "system/system.h"

// Each lays its wave on slice 0 as the plane wave does: phase and direction by the same formula,
// log and arguments alike. Here F follows the field, |E|^2 2 pi cos(theta) / lambda at each sample,
// so its sum is the flux that the first step finds in the field.

// The fundamental mode LP01 of a step-index fibre of radius r and indices n and ne around x, y;
// amp is the amplitude at its centre.
double init_lp01_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                      const struct_emfield& f, bool is_quiet);

// The field in f.file, moved by x, y; of several slices the one at z. amp multiplies it; 0, as
// where it is not given, counts as 1. theta and phi turn its direction. At theta = 0, amp = 1 and
// on the samples of the file, E is the file's numbers to the last bit.
double init_file_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                      const struct_emfield& f, bool is_quiet);
