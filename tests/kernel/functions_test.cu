// Device arithmetic that differs from the host's.
#include <cmath>

#include "kernel/device_test.h"
#include "kernel/launch.h"
#include "kernel/mode.cuh"

namespace {

using DeviceFunctions = DeviceTest;

struct Step {
  double2 n_i, n_t, kz_i, kz_t;
  bool is_TE;
  double2 t;  // as expected
};

__global__ void roots(const double2* z, double2* root) {
  root[blockIdx.x] = device::root(z[blockIdx.x]);
}
__global__ void trims(const double* value, double* trimmed) {
  trimmed[blockIdx.x] = device::trim(value[blockIdx.x]);
}
__global__ void transmissions(const Step* steps, double2* t) {
  const Step& s = steps[blockIdx.x];
  const device::IndexPair pair = device::index_pair(s.n_i, s.n_t, 1.0, 1.0);
  t[blockIdx.x] = device::transmission(pair, s.kz_i, s.kz_t, s.is_TE);
}

template <class Out, class Kernel, class In>
std::vector<Out> over(Kernel kernel, const std::vector<In>& values) {
  const DeviceArray<In> in(values);
  const DeviceArray<Out> out(values.size());
  EXPECT_EQ(device::launch(kernel, unsigned(values.size()), 1, 0, in, out), cudaSuccess);
  return out.download();
}

// On the negative real axis the real part is exactly zero, which marks evanescent waves.
TEST_F(DeviceFunctions, RootIsInTheRightHalfPlaneWithTheSignOfItsArgument) {
  const std::vector<cpx> values = {
      {4, 0},     {-4, 0},    {0, 2},       {3, 4},       {-3, -4}, {-3, -0.0},     {1e-150, 0},
      {1, -1e-3}, {-1e-9, 0}, {-0.1, -0.0}, {-7.3e20, 0}, {0, 0},   {1e150, -1e150}};
  const std::vector<cpx> results = over<cpx>(roots, values);
  for (std::size_t v = 0; v < values.size(); ++v) {
    const cpx z = values[v], root = results[v];
    // 1 - c loses digits if the ratio of the parts is small. None is below 1e-3.
    EXPECT_LE(std::abs(root * root - z), 1e-12 * std::abs(z)) << z;
    EXPECT_EQ(std::signbit(root.imag()), std::signbit(z.imag())) << z;
    EXPECT_GE(root.real(), 0.0) << z;
    EXPECT_EQ(root.real() == 0.0, z.imag() == 0.0 && z.real() <= 0.0) << z;
  }
}

// 0.3/0.0001 and 0.7/0.0001 are just under a whole number in double precision, and whole in single.
TEST_F(DeviceFunctions, TrimFloorsInSinglePrecision) {
  const std::vector<double> values = {0, 1, 0.99996, 0.29999, 0.3, 0.7, -0.00001, -0.5, -0.70001};
  const double steps[] = {0, 10000, 9999, 2999, 3000, 7000, -1, -5000, -7001};
  const std::vector<double> trimmed = over<double>(trims, values);
  for (std::size_t v = 0; v < values.size(); ++v)
    EXPECT_EQ(trimmed[v], steps[v] * 0.0001) << values[v];
  EXPECT_LT(std::floor(0.3 / 0.0001), 3000);
}

TEST_F(DeviceFunctions, TransmissionIsFresnelsOnTheGrid) {
  const std::vector<Step> steps = {
      {{1, 0}, {1.5, 0}, {1, 0}, {0, 1}, true, {1, -1}},
      {{1, 0}, {1.5, 0}, {1, 0}, {2, 0}, false, {0.7058, 0}},  // 3/4.25
      {{0, 1}, {1, 0}, {1, 0}, {2, 0}, false, {0, -2}},        // 2i/(1 - 2)
      {{1, 0}, {1.5, 0}, {0, 2}, {0, -2}, true, {1, 0}},       // 0/0
      {{1, 0}, {1, 0}, {0, 2}, {0, -2}, false, {1, 0}},        // 0/0
  };
  const std::vector<cpx> t = over<cpx>(transmissions, steps);
  for (std::size_t s = 0; s < steps.size(); ++s)
    EXPECT_EQ(t[s], cpx(steps[s].t.x, steps[s].t.y)) << s;
}

}  // namespace
