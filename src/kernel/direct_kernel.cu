// One thread a sample, every thread through all plane waves: direct superposition, no inverse
// transform, since the index under each sample is its own.
#include "kernel/kernels.cuh"
#include "kernel/mode.cuh"

__global__ void __launch_bounds__(device::kLargestBlock)
    naiveKernel_3D(cufftDoubleComplex* E, double* F, cufftDoubleComplex* N, cufftDoubleComplex* KX,
                   cufftDoubleComplex* KY, cufftDoubleComplex* S, double* X, double* Y, double k0,
                   double dz, double /*dx*/, double /*dy*/, int nx, int ny, int k,
                   bool do_evanescent_modes, bool is_magnetic_field, bool is_TE) {
  // The thread's y selects the x sample, although the grid is laid out for the other way round: on
  // grids that are not square some samples have no thread.
  const int i = static_cast<int>(blockIdx.y * blockDim.y + threadIdx.y);
  const int j = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (i >= nx || j >= ny) return;

  const int plane = nx * ny;
  const int idx_0 = k * plane + j * nx + i;
  const int idx_1 = idx_0 + plane;
  const double x = X[i];
  const double y = Y[j];
  const device::IndexPair pair = device::index_pair(N[idx_0], N[idx_1], k0, dz);
  const device::ModeRules rules = {do_evanescent_modes, is_magnetic_field, is_TE};

  for (int q = 0; q < ny; ++q) {
    for (int p = 0; p < nx; ++p) {
      device::Complex f;
      if (!device::normalised_amplitude(S, p, q, nx, ny, &f)) continue;
      const double kx = KX[p].x;
      const double ky = KY[q].x;
      const double kxy_sq = pow(kx, 2.0) + pow(ky, 2.0);
      const bool is_vertical_incidence = p == 0 && q == 0;
      const device::DeviceMode mode =
          device::mode_for_pair(pair, f, kxy_sq, is_vertical_incidence, dz, rules);
      if (!mode.contributes) continue;
      if (mode.updates_flux) F[idx_1] = mode.flux + F[idx_1];

      const double phi_xy = x * kx + y * ky;
      const device::Complex phi = make_cuDoubleComplex(phi_xy + mode.phi_z.x, mode.phi_z.y);
      E[idx_1] = cuCadd(E[idx_1], cuCmul(mode.f_t, device::exp_i(phi)));
    }
  }
}
