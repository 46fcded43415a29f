// The kernels of the fast propagation: amplitudes of a pair of indices behind a step, and the
// gathering of their transforms.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

// For pairs first..first+batch-1 of a step, what the plane waves of the spectrum S become behind
// it, by transform bins. blockIdx.z selects the pair, thread (x, y) the frequency (p, q).
//   A     out [batch][3][ny][nx]  amplitudes; the same times the bin's frequency number in x; in y
//   flux  out [batch][ny][nx]     what each plane wave adds to the flux
//   S     in  [ny][nx]            unnormalised forward transform of the slice before the step
//   n_i, n_t       in [pairs]     indices before and behind the step
//   KX, KY         in [nx], [ny]  transform order, real parts, rad/m
//   bin_x, bin_y, phase_x, phase_y, number_x, number_y   of each axis, as FastAxis has them
__global__ void pairSpectraKernel_3D(cufftDoubleComplex* A, double* flux,
                                     const cufftDoubleComplex* S, const cufftDoubleComplex* n_i,
                                     const cufftDoubleComplex* n_t, const cufftDoubleComplex* KX,
                                     const cufftDoubleComplex* KY, const int* bin_x,
                                     const int* bin_y, const cufftDoubleComplex* phase_x,
                                     const cufftDoubleComplex* phase_y, const double* number_x,
                                     const double* number_y, double k0, double dz, int nx, int ny,
                                     int first, bool do_evanescent_modes, bool is_magnetic_field,
                                     bool is_TE);

// out[t] = the sum of in[t*length] to in[t*length + length - 1], in that order, for t < count.
__global__ void sumRunsKernel_3D(double* out, const double* in, int count, int length);

// Adds to each sample of the slice whose pair is one of first..first+batch-1 its transform in A,
// corrected for the drift of the axes, and its pair's flux. Threads as in the direct kernel, whose
// coverage of a grid that is not square it shares.
//   E, F   in/out [ny][nx]        A  in [batch][3][ny][nx], now by sample
//   flux   in [batch]             which  in [ny][nx], the pair of each sample
__global__ void gatherPairsKernel_3D(cufftDoubleComplex* E, double* F, const cufftDoubleComplex* A,
                                     const double* flux, const unsigned* which,
                                     const double* drift_x, const double* drift_y, int nx, int ny,
                                     int first, int batch);
