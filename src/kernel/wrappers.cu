// The slice loops. Slice k+1 follows from slice k: transforms and launches go to the default
// stream, whose order is all the synchronisation there is.
#include <cufft.h>

#include <iostream>

#include "diagnostics.h"
#include "kernel/kernel.h"
#include "kernel/kernels.cuh"
#include "kernel/launch.h"
#include "kernel/spectrum.h"

void naiveKernelWrapper_3D(double2* E, double* F, double2* N, double2* KX, double* X, double2* KY,
                           double* Y, double k0, double dz, double dy, double dx, int nz, int ny,
                           int nx, int blockSize, bool do_evanescent_modes, bool is_magnetic_field,
                           bool is_TE) {
  const int plane = nx * ny;
  device::Spectrum spectrum(ny, nx, CUFFT_Z2Z);
  if (!spectrum.has_room()) return;
  const auto edge = static_cast<unsigned>(blockSize);
  const dim3 block_dim(edge, edge, 1);
  const dim3 grid_dim(device::blocks_for(nx, blockSize), device::blocks_for(ny, blockSize), 1);
  for (int k = 0; k < nz - 1; ++k) {
    spectrum.transform(E + k * plane);
    // A refused launch leaves the slice as it is; the caller finds the error after synchronising.
    device::launch(naiveKernel_3D, grid_dim, block_dim, 0, E, F, N, KX, KY, spectrum.S, X, Y, k0,
                   dz, dx, dy, nx, ny, k, do_evanescent_modes, is_magnetic_field, is_TE);
  }
}

void shMemKernelWrapper_3D(double2* E, double2* N, double2* KX, double* X, double2* KY, double* Y,
                           double k0, double dz, int nz, int ny, int nx, int blockSize,
                           int fresnel) {
  // A single-precision plan for double-precision transforms: a defect that stands. The transforms
  // fail, and the kernels read whatever S holds.
  device::Spectrum spectrum(ny, nx, CUFFT_C2C);
  const dim3 block_dim(static_cast<unsigned>(blockSize), 1, 1);
  const dim3 grid_dim(device::blocks_for(nx * ny, blockSize), 1, 1);
  const std::size_t sharedMemorySize = static_cast<std::size_t>(blockSize) * 2 * sizeof(double2);

  if (fresnel != 0 && fresnel != 1) {
    std::cout << "Error - Unknown Fresnel Coefficient " << fresnel << std::endl;
    diagnostics::fail("the shared-memory kernel has Fresnel coefficients 0 (TE) and 1 (TM) alone");
  }
  if (!spectrum.has_room()) return;
  const auto kernel = fresnel == 0 ? shMemKernelTE_3D : shMemKernelTM_3D;
  // Per slice the TE loop moves on by a plane, the TM loop by a line: it stands so, too.
  const int step = fresnel == 0 ? nx * ny : nx;
  for (int k = 0; k < nz - 1; ++k) {
    spectrum.transform(E + k * step);
    device::launch(kernel, grid_dim, block_dim, sharedMemorySize, E, N, KX, KY, spectrum.S, X, Y,
                   k0, dz, nx, ny, k);
  }
}

bool is_host_standin() {
  return device::kIsHostStandin;
}
