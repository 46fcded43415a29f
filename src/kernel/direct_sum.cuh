// The kernels of a step by the direct sum, of a slice at a time: the same arithmetic in the same
// order as the direct kernel of volumes, so the same bits. Neighbouring threads have neighbouring
// samples, and the plane waves that are kept are listed first.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include "kernel/bins.cuh"
#include "kernel/plane_kernels.cuh"

namespace device {

// A plane wave that is kept.
struct KeptWave {
  Complex f;  // normalised amplitude
  double kx, ky, kxy_sq;
  bool is_vertical_incidence;
};

// The plane waves of the raw transform S, read one by one: f is its place and that of its sign.
struct AllWaves {
  const double2* S;
  const double* kx;
  const double* ky;
  int nx, ny;

  [[nodiscard]] __device__ int count() const { return nx * ny; }
  __device__ bool get(int number, KeptWave* wave) const {
    const int q = number / nx;
    const int p = number % nx;
    if (!normalised_amplitude(S, p, q, nx, ny, &wave->f)) return false;
    wave->kx = kx[p];
    wave->ky = ky[q];
    wave->kxy_sq = pow(wave->kx, 2.0) + pow(wave->ky, 2.0);
    wave->is_vertical_incidence = p == 0 && q == 0;
    return true;
  }
};

// What list_waves has listed.
struct ListedWaves {
  const KeptWave* waves;
  int kept;

  [[nodiscard]] __device__ int count() const { return kept; }
  __device__ bool get(int number, KeptWave* wave) const {
    *wave = waves[number];
    return true;
  }
};

// How many plane waves each row keeps, where each row begins and how many there are, and the list
// in order of q, then p.
//   row_begin  [ny + 1]
__global__ void count_waves(int* row_begin, const double2* S, int nx, int ny);
__global__ void add_up_rows(int* row_begin, int ny);
__global__ void list_waves(KeptWave* waves, const int* row_begin, const double2* S,
                           const double* kx, const double* ky, int nx, int ny);

// E and F at one sample, from zero on: every plane wave, in order.
template <class Waves>
__device__ inline void sum_waves(const Waves& waves, const IndexPair& pair, double x, double y,
                                 double dz, ModeRules rules, double2* E, double* F) {
  Complex field = make_cuDoubleComplex(0.0, 0.0);
  double flux = 0.0;
  const int count = waves.count();
  for (int number = 0; number < count; ++number) {
    KeptWave wave;
    if (!waves.get(number, &wave)) continue;
    const DeviceMode mode =
        mode_for_pair(pair, wave.f, wave.kxy_sq, wave.is_vertical_incidence, dz, rules);
    if (!mode.contributes) continue;
    if (mode.updates_flux) flux = mode.flux + flux;
    const double phi_xy = x * wave.kx + y * wave.ky;
    const Complex phi = make_cuDoubleComplex(phi_xy + mode.phi_z.x, mode.phi_z.y);
    field = cuCadd(field, cuCmul(mode.f_t, exp_i(phi)));
  }
  *E = field;
  *F = flux;
}

// The slice, of the samples below covered_x, covered_y.
//   E, F  out [ny][nx]    which  in [ny][nx], the pair of each sample    X, Y  in
template <class Index>
__global__ void __launch_bounds__(kBlockThreads)
    sum_listed(double2* E, double* F, const KeptWave* waves, const int* row_begin,
               const IndexPair* constants, const Index* which, const double* X, const double* Y,
               double dz, int nx, int ny, int covered_x, int covered_y, ModeRules rules) {
  const int i = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  const int j = static_cast<int>(blockIdx.y * blockDim.y + threadIdx.y);
  if (i >= covered_x || j >= covered_y) return;
  const int sample = j * nx + i;
  sum_waves(ListedWaves{waves, row_begin[ny]}, constants[which[sample]], X[i], Y[j], dz, rules,
            &E[sample], &F[sample]);
}

// The same without a list, if the step or its pairs turned out to be wild: what the transforms made
// of them is replaced. Otherwise there is nothing to do.
template <class Index>
__global__ void __launch_bounds__(kBlockThreads)
    sum_if_wild(double2* E, double* F, const double2* S, const Wild* wild, int step,
                int pairs_number, const IndexPair* constants, const Index* which, const double* kx,
                const double* ky, const double* X, const double* Y, double dz, int nx, int ny,
                int covered_x, int covered_y, ModeRules rules) {
  const int i = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  const int j = static_cast<int>(blockIdx.y * blockDim.y + threadIdx.y);
  if (i >= covered_x || j >= covered_y) return;
  if (wild->step != step && wild->pairs != pairs_number) return;
  const int sample = j * nx + i;
  sum_waves(AllWaves{S, kx, ky, nx, ny}, constants[which[sample]], X[i], Y[j], dz, rules,
            &E[sample], &F[sample]);
}

}  // namespace device
