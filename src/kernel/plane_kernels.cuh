// The kernels of a step by transforms. Neighbouring threads have neighbouring samples; blockIdx.z
// is the pair, counted from the first of its batch.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include <cstdint>

#include "kernel/mode.cuh"

namespace device {

inline constexpr int kBlockX = 32, kBlockY = 8;  // of the kernels over planes and folds
inline constexpr int kBlockThreads = kBlockX * kBlockY;
inline constexpr int kRun = 64;  // terms that a thread of the flux sums adds

// Where steps have met values that single precision cannot hold: the number of the last such step
// and of the last such set of pairs.
struct Wild {
  int step, pairs;
};

// What all plane waves share, for each pair of indices.
__global__ void pair_constants(IndexPair* constants, const double2* n_i, const double2* n_t,
                               int count, double k0, double dz);

// What a step does to plane waves of amplitude 1, [pair][fold of ky][fold of kx]: the factor of the
// field, longitudinal phase included, and the factor of |f|^2 in the flux; 0 where dropped.
//   kx, ky  in  rad/m, transform order
__global__ void __launch_bounds__(kBlockThreads)
    transfer_functions(double2* field, double* flux, Wild* wild, const IndexPair* constants,
                       const double* kx, const double* ky, int nx, int ny, double dz,
                       ModeRules rules, int pairs_number);

// The spectrum by bins, weak plane waves dropped.
//   f, power  out [ny][nx]  amplitudes, and the sum of their squared moduli
//   S         in  [ny][nx]  unnormalised forward transform
__global__ void __launch_bounds__(kBlockThreads)
    bin_spectrum(double2* f, double* power, Wild* wild, const double2* S, int nx, int ny, int step);

// Amplitudes behind the step, and the same times the bin's frequency number in x and in y.
//   A  out [pair][ny][nx]    drift  out [pair][2][ny][nx]    field  in, of the pair's batch
__global__ void __launch_bounds__(kBlockThreads)
    apply_transfer(double2* A, float2* drift, const double2* f, const double2* field, int nx,
                   int ny);

// The flux of each pair, in strands that are then added by add_strands until one is left: a tree of
// additions in an order that depends on the sizes alone. blockIdx.y is the pair.
//   sums  out [pair][strands]    power  in [ny][nx]    flux  in, of the pair's batch
__global__ void flux_strands(double* sums, const double* power, const double* flux, int nx, int ny,
                             int strands);
__global__ void add_strands(double* sums, const double* strands, int strand_count, int sum_count);

// The slice: each sample whose pair is in the batch takes its transform, corrected for the drift of
// the axes, and its pair's flux. Only samples below covered_x, covered_y are reached.
//   E, F  out [ny][nx]    A, drift  in, now by sample    flux  in [pair]
//   which in [ny][nx]     the pair of each sample, of all pairs
template <class Index>
__global__ void __launch_bounds__(kBlockThreads)
    gather_samples(double2* E, double* F, const double2* A, const float2* drift, const double* flux,
                   const Index* which, int nx, int ny, int covered_x, int covered_y, int first,
                   int batch, double drift_x, double drift_y) {
  const int i = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  const int j = static_cast<int>(blockIdx.y * blockDim.y + threadIdx.y);
  if (i >= covered_x || j >= covered_y) return;
  const std::size_t plane = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
  const std::size_t sample =
      static_cast<std::size_t>(j) * static_cast<std::size_t>(nx) + static_cast<std::size_t>(i);
  const long long member = static_cast<long long>(which[sample]) - first;
  if (member < 0 || member >= batch) return;
  const auto at = static_cast<std::size_t>(member) * plane + sample;
  const std::size_t at_drift = at + static_cast<std::size_t>(member) * plane;
  const float2 in_x = drift[at_drift];
  const float2 in_y = drift[at_drift + plane];
  const double by_x = drift_x * (i - nx / 2);
  const double by_y = drift_y * (j - ny / 2);
  const Complex sum = A[at];
  const Complex correction =
      make_cuDoubleComplex(-(in_x.y * by_x + in_y.y * by_y), in_x.x * by_x + in_y.x * by_y);
  // Added to a slice of zeros, so that a zero has the sign that it has there.
  E[sample] = cuCadd(make_cuDoubleComplex(0.0, 0.0), cuCadd(sum, correction));
  F[sample] = flux[member] + 0.0;
}

}  // namespace device
