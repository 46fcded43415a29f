#include "kernel/direct_sum.cuh"

namespace device {

__global__ void count_waves(int* row_begin, const double2* S, int nx, int ny) {
  const int q = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (q >= ny) return;
  int kept = 0;
  for (int p = 0; p < nx; ++p) {
    Complex ignored;
    if (normalised_amplitude(S, p, q, nx, ny, &ignored)) ++kept;
  }
  row_begin[q + 1] = kept;
}

__global__ void add_up_rows(int* row_begin, int ny) {
  row_begin[0] = 0;
  for (int q = 0; q < ny; ++q) row_begin[q + 1] += row_begin[q];
}

__global__ void list_waves(KeptWave* waves, const int* row_begin, const double2* S,
                           const double* kx, const double* ky, int nx, int ny) {
  const int q = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (q >= ny) return;
  const AllWaves all = {S, kx, ky, nx, ny};
  int place = row_begin[q];
  for (int p = 0; p < nx; ++p)
    if (all.get(q * nx + p, &waves[place])) ++place;
}

}  // namespace device
