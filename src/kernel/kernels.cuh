// The kernels, as their wrappers launch them.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

namespace device {

// Threads of the largest block that a launch may ask for: a kernel that is to fit one has
// 65536/1024 = 64 registers a thread, and the compiler is told so.
inline constexpr int kLargestBlock = 1024;

}  // namespace device

// Adds to slice k+1 of E and F what the spectrum S of slice k becomes across one step.
//   E, F   in/out [nz][ny][nx]          N  in [nz][ny][nx]
//   S      in [ny*nx]                   unnormalised forward transform of slice k
//   KX, KY, X, Y, k0, dz, dx, dy        as the wrapper takes them; dx and dy are not read
// Thread (x, y) of the grid owns the sample (i, j) = (y, x), and no other thread touches it.
__global__ void __launch_bounds__(device::kLargestBlock)
    naiveKernel_3D(cufftDoubleComplex* E, double* F, cufftDoubleComplex* N, cufftDoubleComplex* KX,
                   cufftDoubleComplex* KY, cufftDoubleComplex* S, double* X, double* Y, double k0,
                   double dz, double dx, double dy, int nx, int ny, int k, bool do_evanescent_modes,
                   bool is_magnetic_field, bool is_TE);

// Replace line k+1 of E by the plane waves of spectrum S [nx] across the step from line k of N, and
// the samples behind the line by zeros. Lines are [nx]; KY and Y are not read. A block of B threads
// needs 2*B pairs of doubles of dynamic shared memory.
__global__ void __launch_bounds__(device::kLargestBlock)
    shMemKernelTE_3D(cufftDoubleComplex* E, cufftDoubleComplex* N, cufftDoubleComplex* KX,
                     cufftDoubleComplex* KY, cufftDoubleComplex* S, double* X, double* Y, double k0,
                     double dz, int nx, int ny, int k);
__global__ void __launch_bounds__(device::kLargestBlock)
    shMemKernelTM_3D(cufftDoubleComplex* E, cufftDoubleComplex* N, cufftDoubleComplex* KX,
                     cufftDoubleComplex* KY, cufftDoubleComplex* S, double* X, double* Y, double k0,
                     double dz, int nx, int ny, int k);
