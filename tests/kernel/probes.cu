#include "probes.h"

#include "device_array.h"
#include "kernel/kernels.cuh"
#include "kernel/launch.h"

namespace probes {
namespace {

__device__ double2 root_of(const double2& z) {
  return device::root(z);
}
__device__ double trim_of(const double& value) {
  return device::trim(value);
}
__device__ double2 transmission_of(const Step& s) {
  const device::IndexPair pair = device::index_pair(s.n_i, s.n_t, kK0, kDz);
  return device::transmission(pair, s.kz_i, s.kz_t, s.is_TE);
}
__device__ device::DeviceMode mode_of(const Wave& w) {
  const device::IndexPair pair = device::index_pair(w.n_i, w.n_t, kK0, kDz);
  return device::mode_for_pair(pair, w.f, w.kxy_sq, w.is_vertical_incidence, kDz, w.rules);
}

template <class In, class Out, Out (*function)(const In&)>
__global__ void apply(const In* in, Out* out) {
  out[blockIdx.x] = function(in[blockIdx.x]);
}

template <class In, class Out, Out (*function)(const In&)>
std::vector<Out> over(const std::vector<In>& values) {
  const DeviceArray<In> in(values);
  const DeviceArray<Out> out{std::vector<Out>(values.size())};
  const auto count = static_cast<unsigned>(values.size());
  EXPECT_EQ(device::launch(apply<In, Out, function>, count, 1, 0, in, out), cudaSuccess);
  EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
  return out.download();
}

}  // namespace

std::vector<double2> roots(const std::vector<double2>& values) {
  return over<double2, double2, root_of>(values);
}
std::vector<double> trims(const std::vector<double>& values) {
  return over<double, double, trim_of>(values);
}
std::vector<double2> transmissions(const std::vector<Step>& steps) {
  return over<Step, double2, transmission_of>(steps);
}
std::vector<device::DeviceMode> modes(const std::vector<Wave>& waves) {
  return over<Wave, device::DeviceMode, mode_of>(waves);
}

cudaError_t launch_line(bool is_TE, double2* E, double2* N, double2* KX, double2* S, double* X,
                        double k0, double dz, int nx, int ny, int k, int B) {
  const auto edge = static_cast<unsigned>(B);
  const auto blocks = static_cast<unsigned>((nx * ny + B - 1) / B);
  // KY and Y are never read: any device pointer will do.
  return device::launch(is_TE ? shMemKernelTE_3D : shMemKernelTM_3D, blocks, edge,
                        2 * edge * sizeof(double2), E, N, KX, KX, S, X, X, k0, dz, nx, ny, k);
}

}  // namespace probes
