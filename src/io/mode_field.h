// The field of a mode on the samples of a slice.
#pragma once

#include <string>
#include <vector>

#include "io/io.h"

// [ny][nx], of any amplitude: what `mode` asks for, but for the input field, which is the run's
// own. n: index of the medium, for the tilt of a Gaussian or fibre mode. A mode that is 0 on all
// samples ends the process.
std::vector<cpx> mode_field(const Monitor& monitor, const Grid& grid, const RunContext& run,
                            double n, const std::string& where);
