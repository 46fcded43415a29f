#include "kernel/plane_kernels.cuh"

#include "kernel/bins.cuh"
#include "kernel/launch.h"

namespace device {
namespace {

// Amplitudes and factors of this size, their products and sums, fit single precision, where the
// drift is worked out.
constexpr double kTame = 1e15;
constexpr double kLargest = 1.7976931348623157e308;

__device__ std::size_t place(int row, int column, int columns) {
  return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
         static_cast<std::size_t>(column);
}

}  // namespace

__global__ void pair_constants(IndexPair* constants, const double2* n_i, const double2* n_t,
                               int count, double k0, double dz) {
  const int pair = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (pair < count) constants[pair] = index_pair(n_i[pair], n_t[pair], k0, dz);
}

__global__ void __launch_bounds__(kBlockThreads)
    transfer_functions(double2* field, double* flux, Wild* wild, const IndexPair* constants,
                       const double* kx, const double* ky, int nx, int ny, double dz,
                       ModeRules rules, int pairs_number) {
  const int column = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  const int row = static_cast<int>(blockIdx.y * blockDim.y + threadIdx.y);
  const int columns = nx / 2 + 1;
  const int rows = ny / 2 + 1;
  if (column >= columns || row >= rows) return;
  const double kxy_sq = pow(kx[column], 2.0) + pow(ky[row], 2.0);
  const DeviceMode mode = mode_for_pair(constants[blockIdx.z], make_cuDoubleComplex(1.0, 0.0),
                                        kxy_sq, column == 0 && row == 0, dz, rules);
  Complex factor = make_cuDoubleComplex(0.0, 0.0);
  double flux_factor = 0.0;
  if (mode.contributes) factor = cuCmul(mode.f_t, exp_i(mode.phi_z));
  if (mode.contributes && mode.updates_flux) flux_factor = mode.flux;
  if (!(cuCabs(factor) < kTame && fabs(flux_factor) <= kLargest))
    store_from_any(&wild->pairs, pairs_number);
  const std::size_t at = place(static_cast<int>(blockIdx.z) * rows + row, column, columns);
  field[at] = factor;
  flux[at] = flux_factor;
}

__global__ void __launch_bounds__(kBlockThreads)
    bin_spectrum(double2* f, double* power, Wild* wild, const double2* S, int nx, int ny,
                 int step) {
  const int column = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  const int row = static_cast<int>(blockIdx.y * blockDim.y + threadIdx.y);
  if (column >= nx || row >= ny) return;
  int p[2];
  int q[2];
  const int columns = frequencies_of_bin(column, nx, p);
  const int rows = frequencies_of_bin(row, ny, q);
  Complex sum = make_cuDoubleComplex(0.0, 0.0);
  double squares = 0.0;
  for (int r = 0; r < rows; ++r)
    for (int c = 0; c < columns; ++c) {
      Complex amplitude = make_cuDoubleComplex(0.0, 0.0);
      if (!normalised_amplitude(S, p[c], q[r], nx, ny, &amplitude)) continue;
      const double modulus_sq = amplitude.x * amplitude.x + amplitude.y * amplitude.y;
      if (!(modulus_sq < kTame * kTame)) store_from_any(&wild->step, step);
      squares += modulus_sq;
      // The turn has no sign of the grid's middle, the amplitude has: twice makes none.
      const double sign = (p[c] + q[r]) % 2 == 0 ? 1.0 : -1.0;
      const Complex turned = cuCmul(turn(p[c], nx), turn(q[r], ny));
      sum = cuCadd(sum, cuCmul(scale(amplitude, sign), turned));
    }
  f[place(row, column, nx)] = sum;
  power[place(row, column, nx)] = squares;
}

__global__ void __launch_bounds__(kBlockThreads)
    apply_transfer(double2* A, float2* drift, const double2* f, const double2* field, int nx,
                   int ny) {
  const int column = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  const int row = static_cast<int>(blockIdx.y * blockDim.y + threadIdx.y);
  if (column >= nx || row >= ny) return;
  const int pair = static_cast<int>(blockIdx.z);
  const int fold_row = pair * (ny / 2 + 1) + fold_of_bin(row, ny);
  const Complex behind = cuCmul(f[place(row, column, nx)],
                                field[place(fold_row, fold_of_bin(column, nx), nx / 2 + 1)]);
  A[place(pair * ny + row, column, nx)] = behind;
  const double number_x = number_of_bin(column, nx);
  const double number_y = number_of_bin(row, ny);
  drift[place(2 * pair * ny + row, column, nx)] = {static_cast<float>(behind.x * number_x),
                                                   static_cast<float>(behind.y * number_x)};
  drift[place((2 * pair + 1) * ny + row, column, nx)] = {static_cast<float>(behind.x * number_y),
                                                         static_cast<float>(behind.y * number_y)};
}

__global__ void flux_strands(double* sums, const double* power, const double* flux, int nx, int ny,
                             int strands) {
  const int strand = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (strand >= strands) return;
  const int pair = static_cast<int>(blockIdx.y);
  const int plane = nx * ny;
  double sum = 0.0;
  for (int bin = strand; bin < plane; bin += strands) {
    const int fold_row = pair * (ny / 2 + 1) + fold_of_bin(bin / nx, ny);
    sum += power[bin] * flux[place(fold_row, fold_of_bin(bin % nx, nx), nx / 2 + 1)];
  }
  sums[place(pair, strand, strands)] = sum;
}

__global__ void add_strands(double* sums, const double* strands, int strand_count, int sum_count) {
  const int at = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (at >= sum_count) return;
  const int pair = static_cast<int>(blockIdx.y);
  double sum = 0.0;
  for (int strand = at; strand < strand_count; strand += sum_count)
    sum += strands[place(pair, strand, strand_count)];
  sums[place(pair, at, sum_count)] = sum;
}

}  // namespace device
