// Propagation on the device: the host side of the kernels.
//
// All pointers are device pointers and stay the caller's. Lengths in m, wavenumbers in rad/m; a
// volume is [nz][ny][nx], x fastest, of fewer than 2^31 samples. No wrapper copies, synchronises or
// clears an error: look at cudaGetLastError() after cudaDeviceSynchronize(). The working storage of
// a call (transform plan and spectrum) is held until the process ends. A plan, an allocation or a
// transform that failed, which no return value shows, is an error message to the observer.
#pragma once

#include <cuda_runtime.h>

#include "kernel/slice_stepper.h"

// Advances E through slices 1..nz-1: scalar wave propagation method, unidirectional.
//   E  in/out [nz][ny][nx]  slice 0 given; terms are added to what the others hold
//   F  in/out [nz][ny][nx]  energy flux, added to likewise
//   N  in     [nz][ny][nx]  n + i*kappa, kappa > 0 absorbs
//   KX, KY in [nx], [ny]    transform order, real parts;  X, Y in [nx], [ny]  centred
//   blockSize               edge of a square block of threads; outside 1..32 no launch succeeds:
//                           the slices stay as they are and error 9 is left
// dy and dx are not used. Covers i < min(nx, B*ceil(ny/B)) and j < min(ny, B*ceil(nx/B)), B being
// blockSize: all samples of a square grid, not all of another. NaN in, NaN out.
// Cost (nz-1)*(nx*ny)^2.
void naiveKernelWrapper_3D(double2* E, double* F, double2* N, double2* KX, double* X, double2* KY,
                           double* Y, double k0, double dz, double dy, double dx, int nz, int ny,
                           int nx, int blockSize, bool do_evanescent_modes, bool is_magnetic_field,
                           bool is_TE);

// A simpler model on lines instead of planes, with the spectrum staged through shared memory:
// sample m of slice s is element s*nx + m. No flux, no evanescent modes; only whole tiles of
// blockSize modes are summed. Arguments as above; KY and Y are not used.
//   fresnel  0 TE, 1 TM; another value is reported on standard output and throws Error
// Slices 1..nz-1 are replaced, and what follows a line is zeroed by the threads that idle there.
void shMemKernelWrapper_3D(double2* E, double2* N, double2* KX, double* X, double2* KY, double* Y,
                           double k0, double dz, int nz, int ny, int nx, int blockSize,
                           int fresnel);

// Whether this build's device is the host: timings are then the host's.
bool is_host_standin();
