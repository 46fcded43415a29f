// The device against the CPU: bounds on their agreement, and their differences.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "kernel/device_test.h"
#include "kernel/kernel.h"
#include "main/device_stepper.h"
#include "support/scene.h"
#include "wpm/march.h"
#include "wpm/whole_volume.h"

namespace {

constexpr int kBlock = 8;

// Computes whole volumes by the wrapper, or slice by slice.
void run_on_device(Scene& scene, bool is_fast) {
  const bool is_TE = scene.pol != TM;
  if (is_fast) {
    DeviceStepper stepper(scene.grid(), scene.options(), {true, is_TE, kBlock});
    WholeVolume slices(scene.grid(), scene.E.data(), scene.F.data(), scene.N.data(), nullptr,
                       &stepper);
    PropagationTotals totals;
    propagate(scene.grid(), slices, stepper, {}, {}, {}, kFromTheEntry, totals);
    return;
  }
  const DeviceArray<cpx> E(scene.E);
  const DeviceArray<cpx> N(scene.N);
  const DeviceArray<cpx> KX(scene.KX);
  const DeviceArray<cpx> KY(scene.KY);
  const DeviceArray<double> F(scene.F);
  const DeviceArray<double> X(scene.X);
  const DeviceArray<double> Y(scene.Y);
  naiveKernelWrapper_3D(E, F, N, KX, X, KY, Y, scene.k0, scene.dz, scene.dy, scene.dx, scene.nz,
                        scene.ny, scene.nx, kBlock, scene.do_evanescent_modes,
                        scene.is_magnetic_field, is_TE);
  cudaDeviceSynchronize();
  EXPECT_EQ(cudaGetLastError(), cudaSuccess);
  scene.E = E.download();
  scene.F = F.download();
}

Scene device_run(Scene scene, bool is_fast) {
  run_on_device(scene, is_fast);
  return scene;
}

void expect_near(const Scene& expected, const Scene& actual, double field_bound,
                 double flux_bound) {
  for (int k = 0; k < expected.nz; ++k) {
    const SliceDifference worst = difference(expected, actual, k);
    EXPECT_LE(worst.field, field_bound) << "slice " << k << ", sample " << worst.sample;
    EXPECT_LE(worst.flux, flux_bound) << "slice " << k;
  }
}

bool has_index_step(const Scene& scene) {
  for (std::size_t s = scene.index(1, 0, 0); s < scene.N.size(); ++s)
    if (scene.N[s].real() != scene.N[s - scene.index(1, 0, 0)].real()) return true;
  return false;
}

class DeviceScene : public DeviceTest, public testing::WithParamInterface<NamedScene> {};
class CommonScene : public DeviceScene {};

// Scenes that both sides treat alike: square, and polarized.
std::vector<NamedScene> common_scenes() {
  std::vector<NamedScene> common;
  for (const NamedScene& named : scene_table()) {
    const Scene scene = named.make();
    if (scene.nx == scene.ny && scene.pol != NA) common.push_back(named);
  }
  return common;
}

std::string name_of(const testing::TestParamInfo<NamedScene>& info) {
  return info.param.name;
}

// Without an index step the two differ by round-off alone. A coefficient of an index step may
// differ by one notch of 1e-4. Its quotient is then within single rounding of a whole number: about
// one coefficient in 2400 of each of the two parts. These beams have some hundred plane waves of
// like size. One notch in one of them shows as 1e-4/100, and a few as 1e-5. The flux adds squares:
// the strongest waves count for up to a half, and a notch doubles.
TEST_P(CommonScene, AgreesWithTheCpu) {
  Scene cpu = GetParam().make();
  cpu.propagate();
  const bool has_notches = has_index_step(cpu);
  expect_near(cpu, device_run(GetParam().make(), false), has_notches ? 1e-5 : 1e-12,
              has_notches ? 1e-4 : 1e-12);
}

// The two device propagators share their coefficients. They differ by round-off alone.
TEST_P(DeviceScene, FastAgreesWithDirect) {
  expect_near(device_run(GetParam().make(), false), device_run(GetParam().make(), true), 1e-13,
              1e-13);
}

INSTANTIATE_TEST_SUITE_P(Every, CommonScene, testing::ValuesIn(common_scenes()), name_of);
INSTANTIATE_TEST_SUITE_P(Every, DeviceScene, testing::ValuesIn(scene_table()), name_of);

// As many pairs of indices as samples take the direct sum, to the bit. Few pairs take transforms,
// whose round-off is different.
TEST_F(DeviceTest, FastTakesTheCheaperSum) {
  for (const auto& [name, is_direct] : {std::pair("index_of_its_own", true), {"guide_TE", false}}) {
    const Scene direct = device_run(scene_named(name), false);
    const Scene fast = device_run(scene_named(name), true);
    EXPECT_EQ(fast.E == direct.E, is_direct) << name;
  }
}

// --- Differences

class DeviceDifference : public DeviceTest {};

TEST_F(DeviceDifference, MissingPolarizationIsTEOnTheDevice) {
  const Scene none = device_run(scene_named("step_up_no_polarization"), false);
  const Scene te = device_run(scene_named("step_up_TE"), false);
  EXPECT_EQ(none.E, te.E);
  Scene cpu = scene_named("step_up_no_polarization");
  cpu.propagate();
  EXPECT_GT(difference(cpu, none, 3).field, 0.1) << "the CPU has no Fresnel factor";
}

// On 18 x 12 samples in blocks of 8 threads reach i < min(18, 8*ceil(12/8)) = 16. The last two
// columns of every slice after the first do not change. The rest of slice 1 is right.
TEST_F(DeviceDifference, GridsThatAreNotSquareAreNotFullyCovered) {
  Scene cpu = scene_named("wide_guide");
  cpu.propagate();
  for (const bool is_fast : {false, true}) {
    const Scene device = device_run(scene_named("wide_guide"), is_fast);
    for (int j = 0; j < cpu.ny; ++j)
      for (int i = 0; i < cpu.nx; ++i)
        if (i < 16)
          EXPECT_NEAR(std::abs(device.at(1, j, i) - cpu.at(1, j, i)), 0.0, 1e-10);
        else
          EXPECT_EQ(device.at(1, j, i), cpx(0.0));
  }
}

}  // namespace
