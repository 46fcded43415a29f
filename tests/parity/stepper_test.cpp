// The device's steps from slice to slice against the whole volume on the device, and the CPU.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "kernel/device_test.h"
#include "main/device_stepper.h"
#include "support/scene.h"

namespace {

constexpr int kBlock = 8;

// Every slice by the stepper, which is told which slices are alike, or not.
Scene stepped(Scene scene, DeviceChoice choice, bool knows_stretches = false) {
  Grid grid;
  grid.nx = scene.nx, grid.ny = scene.ny, grid.nz = scene.nz;
  grid.dx = scene.dx, grid.dy = scene.dy, grid.dz = scene.dz;
  const StepOptions options = {scene.k0, scene.dz, scene.do_evanescent_modes,
                               scene.is_magnetic_field, scene.pol};
  choice.is_TE = scene.pol != TM;
  choice.blockSize = kBlock;
  DeviceStepper stepper(grid, options, choice);
  const auto slice = [&](int k, int stretch) {
    const std::size_t begin = scene.index(k, 0, 0);
    return Slice{&scene.E[begin], &scene.F[begin], &scene.N[begin], knows_stretches ? stretch : -1};
  };
  int stretch = 0;
  for (int k = 0; k < scene.nz - 1; ++k) {
    const auto* here = &scene.N[scene.index(k, 0, 0)];
    const bool is_alike = std::equal(here, here + grid.plane(), here + grid.plane());
    stepper.step(slice(k, stretch), slice(k + 1, is_alike ? stretch : stretch + 1));
    if (!is_alike) ++stretch;
  }
  return scene;
}

Scene by_volume(Scene scene) {
  const DeviceArray<cpx> E(scene.E), N(scene.N), KX(scene.KX), KY(scene.KY);
  const DeviceArray<double> F(scene.F), X(scene.X), Y(scene.Y);
  naiveKernelWrapper_3D(E, F, N, KX, X, KY, Y, scene.k0, scene.dz, scene.dy, scene.dx, scene.nz,
                        scene.ny, scene.nx, kBlock, scene.do_evanescent_modes,
                        scene.is_magnetic_field, scene.pol != TM);
  EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
  scene.E = E.download();
  scene.F = F.download();
  return scene;
}

class Steps : public DeviceTest, public testing::WithParamInterface<NamedScene> {};

// The direct sum has the volume's bits, whatever is known of the slices and whether the field is
// taken from the host for each step or stays where it was made.
TEST_P(Steps, DirectHasTheBitsOfTheVolume) {
  const Scene volume = by_volume(GetParam().make());
  for (const bool field_stays : {false, true}) {
    const Scene steps = stepped(GetParam().make(), {.field_stays = field_stays}, field_stays);
    EXPECT_EQ(steps.E, volume.E);
    EXPECT_EQ(steps.F, volume.F);
  }
}

// By transforms round-off is another, and what is known of the slices changes nothing.
TEST_P(Steps, FastIsTheSameSum) {
  const Scene direct = stepped(GetParam().make(), {});
  const Scene fast = stepped(GetParam().make(), {.is_fast = true});
  for (int k = 0; k < direct.nz; ++k) {
    EXPECT_LE(difference(direct, fast, k).field, 1e-13) << k;
    EXPECT_LE(difference(direct, fast, k).flux, 1e-13) << k;
  }
  const Scene informed = stepped(GetParam().make(), {.is_fast = true, .field_stays = true}, true);
  EXPECT_EQ(informed.E, fast.E);
  EXPECT_EQ(informed.F, fast.F);
}

std::string name_of(const testing::TestParamInfo<NamedScene>& named) {
  return named.param.name;
}

INSTANTIATE_TEST_SUITE_P(Every, Steps, testing::ValuesIn(scene_table()), name_of);

// What a mask does to the field between two steps counts, unless it was said that nothing does.
TEST_F(DeviceTest, TheHostsFieldIsSteppedFrom) {
  Scene scene(8, 8, 3, 0.25, 0.2, 0.15, 1.0);
  Grid grid;
  grid.nx = grid.ny = 8, grid.nz = 3, grid.dx = 0.25, grid.dy = 0.2, grid.dz = 0.15;
  for (const bool field_stays : {false, true}) {
    DeviceStepper stepper(grid, {scene.k0, scene.dz, true, false, TE},
                          {.is_fast = true, .field_stays = field_stays});
    const auto slice = [&](int k) {
      const std::size_t begin = scene.index(k, 0, 0);
      return Slice{&scene.E[begin], &scene.F[begin], &scene.N[begin]};
    };
    stepper.step(slice(0), slice(1));
    EXPECT_STREQ(stepper.sum_taken(), "transforms");
    for (int s = 0; s < 64; ++s) scene.E[scene.index(1, 0, s)] *= 0.5;
    stepper.step(slice(1), slice(2));
    EXPECT_NEAR(std::abs(scene.at(2, 3, 3)), field_stays ? 1.0 : 0.5, 1e-13);
  }
}

// An axis without a spacing, x or y alone, is no transform's: neither the host's nor the device's.
TEST(Stepper, LeavesAxesWithoutSpacingToTheDirectSum) {
  for (const bool is_y : {false, true}) {
    Scene scene(8, 8, 4, is_y ? 0.25 : 0.0, is_y ? 0.0 : 0.2, 0.15, 1.0);
    EXPECT_EQ(scene.propagate_by(make_fast_stepper).direct, 3) << is_y;
    DeviceStepper stepper(scene.grid(), scene.options(), {.is_fast = true});
    stepper.step({scene.E.data(), scene.F.data(), scene.N.data()},
                 {&scene.E[64], &scene.F[64], &scene.N[64]});
    EXPECT_STREQ(stepper.sum_taken(), "direct sum") << is_y;
  }
}

}  // namespace
