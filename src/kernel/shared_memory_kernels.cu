// One thread a sample of a line; the block fetches the plane waves tile by tile into shared memory,
// so that each is read from global memory once a block.
#include "kernel/complex.cuh"
#include "kernel/kernels.cuh"
#include "kernel/launch.h"

namespace {

using device::Complex;
using device::scale;

constexpr double kLargestDecay = 0.000001;  // Im(kz_i) in rad/m from which a wave is skipped

// The two indices of a sample and what all its plane waves share.
struct LineSample {
  double nk0_i, nk0_t;
  Complex n_i_n_t, n_t_sq, n_i_sq;
  double x;
  double attenuation;  // over the step, by the extinction before it
};

// t = 2*kz_i/(kz_i + kz_t), untrimmed; 0/0 is NaN.
struct TeTransmission {
  __device__ static Complex of(const LineSample&, Complex kz_i, Complex kz_t) {
    return cuCdiv(scale(kz_i, 2.0), cuCadd(kz_i, kz_t));
  }
};

// t = 2*n_i*n_t*kz_i/(n_t^2*kz_i + n_i^2*kz_t), likewise.
struct TmTransmission {
  __device__ static Complex of(const LineSample& sample, Complex kz_i, Complex kz_t) {
    return cuCdiv(scale(cuCmul(sample.n_i_n_t, kz_i), 2.0),
                  cuCadd(cuCmul(sample.n_t_sq, kz_i), cuCmul(sample.n_i_sq, kz_t)));
  }
};

__device__ LineSample line_sample(Complex n_i, Complex n_t, double x, double k0, double dz) {
  return {n_i.x * k0,       n_t.x * k0, cuCmul(n_i, n_t),       cuCmul(n_t, n_t),
          cuCmul(n_i, n_i), x,          exp(-(n_i.y * k0 * dz))};
}

// sqrt(1 - (K/nk0)^2), the cosine of the wave's angle; K may be complex.
__device__ Complex cosine(Complex K, double nk0) {
  const Complex u = make_cuDoubleComplex(K.x / nk0, K.y / nk0);
  const Complex u_sq = cuCmul(u, u);
  return device::root(make_cuDoubleComplex(1.0 - u_sq.x, 0.0 - u_sq.y));
}

// Plane wave number m, of frequency K and amplitude f, at the sample; zero if it is skipped.
template <class Transmission>
__device__ Complex line_mode(const LineSample& sample, Complex K, Complex f, int m, double dz) {
  const Complex kz_i = scale(cosine(K, sample.nk0_i), sample.nk0_i);
  if (!(kz_i.x != 0.0 && kz_i.y < kLargestDecay)) return make_cuDoubleComplex(0.0, 0.0);
  const Complex kz_t = scale(cosine(K, sample.nk0_t), sample.nk0_t);
  const double sign = m % 2 == 0 ? 1.0 : -1.0;
  const Complex f_t =
      scale(cuCmul(f, Transmission::of(sample, kz_i, kz_t)), sign * sample.attenuation);
  // The phase is that of the medium before the step.
  const Complex phi = cuCadd(scale(kz_i, dz), scale(K, sample.x));
  return cuCmul(f_t, device::exp_i(phi));
}

template <class Transmission>
__device__ void propagate_line(Complex* E, const Complex* N, const Complex* KX, const Complex* S,
                               const double* X, double k0, double dz, int nx, int ny, int k) {
  const int B = static_cast<int>(blockDim.x);
  const int tx = static_cast<int>(threadIdx.x);
  const int g = static_cast<int>(blockIdx.x) * B + tx;
  const bool is_sample = g < nx;
  Complex* tile_K = device::dynamic_shared_memory<Complex>();
  Complex* tile_S = tile_K + B;

  LineSample sample = {};
  if (is_sample) sample = line_sample(N[k * nx + g], N[(k + 1) * nx + g], X[g], k0, dz);

  Complex sum = make_cuDoubleComplex(0.0, 0.0);
  const int tiles = nx / B;  // whole ones: the last nx mod B plane waves are never summed
  for (int c = 0; c < tiles; ++c) {
    tile_K[tx] = KX[c * B + tx];
    tile_S[tx] = S[c * B + tx];
    __syncthreads();
    for (int b = 0; is_sample && b < B; ++b) {
      const Complex f = make_cuDoubleComplex(tile_S[b].x / nx, tile_S[b].y / nx);
      sum = cuCadd(sum, line_mode<Transmission>(sample, tile_K[b], f, c * B + b, dz));
    }
    __syncthreads();  // before the next tile takes the place of this one
  }

  // Threads behind the line write zeros there. With as many threads as a plane has samples they
  // stay inside the volume; the rest of the last block may not. Slice k+1 is there, so nothing
  // below its end as a plane is outside, and what later slices hold is written by their own
  // launches.
  const int idx_1 = (k + 1) * nx + g;
  if (idx_1 < (k + 2) * nx * ny) E[idx_1] = sum;
}

}  // namespace

__global__ void __launch_bounds__(device::kLargestBlock)
    shMemKernelTE_3D(cufftDoubleComplex* E, cufftDoubleComplex* N, cufftDoubleComplex* KX,
                     cufftDoubleComplex* /*KY*/, cufftDoubleComplex* S, double* X, double* /*Y*/,
                     double k0, double dz, int nx, int ny, int k) {
  propagate_line<TeTransmission>(E, N, KX, S, X, k0, dz, nx, ny, k);
}

__global__ void __launch_bounds__(device::kLargestBlock)
    shMemKernelTM_3D(cufftDoubleComplex* E, cufftDoubleComplex* N, cufftDoubleComplex* KX,
                     cufftDoubleComplex* /*KY*/, cufftDoubleComplex* S, double* X, double* /*Y*/,
                     double k0, double dz, int nx, int ny, int k) {
  propagate_line<TmTransmission>(E, N, KX, S, X, k0, dz, nx, ny, k);
}
