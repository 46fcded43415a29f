// The yardstick: the propagation as five plain nested loops, each step written out where it stands.
#pragma once

#include "wpm/wpm.h"

// Same contract and arguments as zerith_3D, none of its economies, one thread. zerith_3D equals it
// to the bit.
void plain_nest_3D(cpx* E, double* F, const cpx* N, const cpx* KX, const double* X, const cpx* KY,
                   const double* Y, double k0, double dz, double dy, double dx, int nz, int ny,
                   int nx, bool do_evanescent_modes, bool is_magnetic_field, polarization pol);
