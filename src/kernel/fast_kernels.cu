#include "kernel/fast_kernels.cuh"

#include <cstddef>

#include "kernel/mode.cuh"

namespace {

using device::Complex;

// On odd sizes the last frequency is 0 again and shares bin 0 with the first; its own bin, the one
// in the middle, stays empty. The thread of the first frequency adds both, that of the last one
// clears the empty bin: each bin has one writer.
__device__ bool shares_first_bin(int p, int n) {
  return n % 2 != 0 && n > 1 && p == n - 1;
}

__device__ int own_bin(int p, int n, const int* bin) {
  return shares_first_bin(p, n) ? n / 2 : bin[p];
}

// The frequencies that the thread of p adds: none, one or two of them.
__device__ int frequencies_of(int p, int n, int frequencies[2]) {
  if (shares_first_bin(p, n)) return 0;
  frequencies[0] = p;
  if (p > 0 || !shares_first_bin(n - 1, n)) return 1;
  frequencies[1] = n - 1;
  return 2;
}

}  // namespace

__global__ void pairSpectraKernel_3D(cufftDoubleComplex* A, double* flux,
                                     const cufftDoubleComplex* S, const cufftDoubleComplex* n_i,
                                     const cufftDoubleComplex* n_t, const cufftDoubleComplex* KX,
                                     const cufftDoubleComplex* KY, const int* bin_x,
                                     const int* bin_y, const cufftDoubleComplex* phase_x,
                                     const cufftDoubleComplex* phase_y, const double* number_x,
                                     const double* number_y, double k0, double dz, int nx, int ny,
                                     int first, bool do_evanescent_modes, bool is_magnetic_field,
                                     bool is_TE) {
  const int p = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  const int q = static_cast<int>(blockIdx.y * blockDim.y + threadIdx.y);
  if (p >= nx || q >= ny) return;
  const int member = static_cast<int>(blockIdx.z);
  const device::IndexPair pair =
      device::index_pair(n_i[first + member], n_t[first + member], k0, dz);
  const device::ModeRules rules = {do_evanescent_modes, is_magnetic_field, is_TE};

  int columns[2];
  int rows[2];
  const int column_count = frequencies_of(p, nx, columns);
  const int row_count = frequencies_of(q, ny, rows);
  Complex amplitude = make_cuDoubleComplex(0.0, 0.0);
  double added_flux = 0.0;
  for (int r = 0; r < row_count; ++r)
    for (int c = 0; c < column_count; ++c) {
      Complex f = make_cuDoubleComplex(0.0, 0.0);
      if (!device::normalised_amplitude(S, columns[c], rows[r], nx, ny, &f)) continue;
      const double kx = KX[columns[c]].x;
      const double ky = KY[rows[r]].x;
      const bool is_vertical_incidence = columns[c] == 0 && rows[r] == 0;
      const device::DeviceMode mode = device::mode_for_pair(pair, f, pow(kx, 2.0) + pow(ky, 2.0),
                                                            is_vertical_incidence, dz, rules);
      if (!mode.contributes) continue;
      if (mode.updates_flux) added_flux += mode.flux;
      // The phases hold the sign that the amplitude has already: their product is without it.
      const double sign = (columns[c] + rows[r]) % 2 == 0 ? 1.0 : -1.0;
      const Complex phase = device::scale(cuCmul(phase_x[columns[c]], phase_y[rows[r]]), sign);
      amplitude = cuCadd(amplitude, cuCmul(cuCmul(mode.f_t, device::exp_i(mode.phi_z)), phase));
    }

  const int plane = nx * ny;
  const int bp = own_bin(p, nx, bin_x);
  const int bq = own_bin(q, ny, bin_y);
  const int bin = bq * nx + bp;
  Complex* planes = A + 3 * std::ptrdiff_t{member} * plane;
  planes[bin] = amplitude;
  planes[plane + bin] = device::scale(amplitude, number_x[bp]);
  planes[2 * plane + bin] = device::scale(amplitude, number_y[bq]);
  flux[std::ptrdiff_t{member} * plane + q * nx + p] = added_flux;
}

__global__ void sumRunsKernel_3D(double* out, const double* in, int count, int length) {
  const int t = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (t >= count) return;
  double sum = 0.0;
  for (int i = 0; i < length; ++i) sum += in[std::ptrdiff_t{t} * length + i];
  out[t] = sum;
}

__global__ void gatherPairsKernel_3D(cufftDoubleComplex* E, double* F, const cufftDoubleComplex* A,
                                     const double* flux, const unsigned* which,
                                     const double* drift_x, const double* drift_y, int nx, int ny,
                                     int first, int batch) {
  const int i = static_cast<int>(blockIdx.y * blockDim.y + threadIdx.y);
  const int j = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (i >= nx || j >= ny) return;
  const int plane = nx * ny;
  const int sample = j * nx + i;
  const int member = static_cast<int>(which[sample]) - first;
  if (member < 0 || member >= batch) return;
  const Complex* planes = A + 3 * std::ptrdiff_t{member} * plane;
  const Complex in_x = device::scale(planes[plane + sample], drift_x[i]);
  const Complex in_y = device::scale(planes[2 * plane + sample], drift_y[j]);
  const Complex drift = cuCadd(in_x, in_y);
  const Complex sum = cuCadd(planes[sample], make_cuDoubleComplex(-drift.y, drift.x));
  E[sample] = cuCadd(E[sample], sum);
  F[sample] = flux[member] + F[sample];
}
