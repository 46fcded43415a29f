// The slice loop of the fast propagation.
#include <cufft.h>

#include <algorithm>
#include <vector>

#include "kernel/fast_kernels.cuh"
#include "kernel/kernel.h"
#include "kernel/kernels.cuh"
#include "kernel/launch.h"
#include "kernel/spectrum.h"

namespace {

constexpr int kBatch = 2;  // pairs transformed together; each takes three planes
constexpr int kRunsPerBlock = 128;

// With more pairs than this share of the samples the direct kernel does less work.
constexpr double kLargestShareOfPairs = 0.4;

// A device array that lives as long as the call.
template <typename T>
class DeviceArray {
 public:
  explicit DeviceArray(std::size_t count) { cudaMalloc(&data_, count * sizeof(T)); }
  DeviceArray(const T* host, std::size_t count) : DeviceArray(count) { upload(host, count); }
  ~DeviceArray() { cudaFree(data_); }
  DeviceArray(const DeviceArray&) = delete;
  DeviceArray& operator=(const DeviceArray&) = delete;

  void upload(const T* host, std::size_t count) {
    cudaMemcpy(data_, host, count * sizeof(T), cudaMemcpyHostToDevice);
  }
  [[nodiscard]] T* data() const { return data_; }

 private:
  T* data_ = nullptr;
};

struct DeviceAxis {
  explicit DeviceAxis(const FastAxis& axis)
      : bin(axis.bin, static_cast<std::size_t>(axis.n)),
        phase(axis.phase, static_cast<std::size_t>(axis.n)),
        number(axis.number, static_cast<std::size_t>(axis.n)),
        drift(axis.drift, static_cast<std::size_t>(axis.n)) {}

  DeviceArray<int> bin;
  DeviceArray<double2> phase;
  DeviceArray<double> number;
  DeviceArray<double> drift;
};

// Plans of inverse transforms of planes, three for each pair of a batch, made when first needed.
class InversePlans {
 public:
  InversePlans(int ny, int nx) : ny_(ny), nx_(nx) {}
  ~InversePlans() {
    for (const cufftHandle plan : plans_)
      if (plan != 0) cufftDestroy(plan);
  }
  InversePlans(const InversePlans&) = delete;
  InversePlans& operator=(const InversePlans&) = delete;

  void transform(double2* A, int batch) {
    cufftHandle& plan = plans_[batch - 1];
    if (plan == 0) {
      int extents[] = {ny_, nx_};
      cufftPlanMany(&plan, 2, extents, nullptr, 1, ny_ * nx_, nullptr, 1, ny_ * nx_, CUFFT_Z2Z,
                    3 * batch);
    }
    cufftExecZ2Z(plan, A, A, CUFFT_INVERSE);
  }

 private:
  int ny_, nx_;
  cufftHandle plans_[kBatch] = {};
};

void launch_sum_of_runs(double* out, const double* in, int count, int length) {
  const auto blocks = static_cast<unsigned>((count + kRunsPerBlock - 1) / kRunsPerBlock);
  device::launch(sumRunsKernel_3D, dim3(blocks), dim3(kRunsPerBlock), 0, out, in, count, length);
}

}  // namespace

void fastKernelWrapper_3D(double2* E, double* F, double2* N, double2* KX, double* X, double2* KY,
                          double* Y, double k0, double dz, double dy, double dx, int nz, int ny,
                          int nx, int blockSize, bool do_evanescent_modes, bool is_magnetic_field,
                          bool is_TE, const FastAxis& x, const FastAxis& y,
                          const PairsOfStep& pairs_of_step) {
  const int plane = nx * ny;
  const auto samples = static_cast<std::size_t>(plane);
  const device::Spectrum spectrum(ny, nx, CUFFT_Z2Z);
  const DeviceAxis axis_x(x);
  const DeviceAxis axis_y(y);
  const DeviceArray<double2> A(3 * kBatch * samples);
  const DeviceArray<double> flux(kBatch * samples);
  const DeviceArray<double> row_flux(kBatch * static_cast<std::size_t>(ny));
  const DeviceArray<double> pair_flux(kBatch);
  DeviceArray<unsigned> which(samples);
  InversePlans inverse(ny, nx);
  const auto edge = static_cast<unsigned>(blockSize);
  const dim3 block_dim(edge, edge, 1);
  const dim3 grid_dim(device::blocks_for(nx, blockSize), device::blocks_for(ny, blockSize), 1);

  for (int k = 0; k < nz - 1; ++k) {
    spectrum.transform(E + k * plane);
    const StepPairs pairs = pairs_of_step(k);
    if (pairs.count > kLargestShareOfPairs * plane) {
      device::launch(naiveKernel_3D, grid_dim, block_dim, 0, E, F, N, KX, KY, spectrum.S, X, Y, k0,
                     dz, dx, dy, nx, ny, k, do_evanescent_modes, is_magnetic_field, is_TE);
      continue;
    }
    const DeviceArray<double2> n_i(pairs.n_i, static_cast<std::size_t>(pairs.count));
    const DeviceArray<double2> n_t(pairs.n_t, static_cast<std::size_t>(pairs.count));
    which.upload(pairs.which, samples);
    for (int first = 0; first < pairs.count; first += kBatch) {
      const int batch = std::min(kBatch, pairs.count - first);
      const dim3 pair_grid(grid_dim.x, grid_dim.y, static_cast<unsigned>(batch));
      device::launch(pairSpectraKernel_3D, pair_grid, block_dim, 0, A.data(), flux.data(),
                     spectrum.S, n_i.data(), n_t.data(), KX, KY, axis_x.bin.data(),
                     axis_y.bin.data(), axis_x.phase.data(), axis_y.phase.data(),
                     axis_x.number.data(), axis_y.number.data(), k0, dz, nx, ny, first,
                     do_evanescent_modes, is_magnetic_field, is_TE);
      launch_sum_of_runs(row_flux.data(), flux.data(), batch * ny, nx);
      launch_sum_of_runs(pair_flux.data(), row_flux.data(), batch, ny);
      inverse.transform(A.data(), batch);
      device::launch(gatherPairsKernel_3D, grid_dim, block_dim, 0, E + (k + 1) * plane,
                     F + (k + 1) * plane, A.data(), pair_flux.data(), which.data(),
                     axis_x.drift.data(), axis_y.drift.data(), nx, ny, first, batch);
    }
  }
}
