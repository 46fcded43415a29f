// The device's steps against the whole volume on the device, and against the CPU.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "kernel/device_test.h"
#include "main/device_stepper.h"
#include "support/scene.h"
#include "wpm/edge.h"
#include "wpm/march.h"
#include "wpm/whole_volume.h"

namespace {

constexpr int kBlock = 8;

// Computes every slice by the stepper. If stays, slices have uniform segments and stay on the
// device.
Scene stepped(Scene scene, DeviceChoice choice, bool stays = false) {
  Grid grid;
  grid.nx = scene.nx, grid.ny = scene.ny, grid.nz = scene.nz;
  grid.dx = scene.dx, grid.dy = scene.dy, grid.dz = scene.dz;
  const StepOptions options = {scene.k0, scene.dz, scene.do_evanescent_modes,
                               scene.is_magnetic_field, scene.pol};
  choice.is_TE = scene.pol != TM;
  choice.blockSize = kBlock;
  DeviceStepper stepper(grid, options, choice);
  const auto slice = [&](int k, int segment, bool on_device) {
    const std::size_t begin = scene.index(k, 0, 0);
    Slice of_scene = {&scene.E[begin], &scene.F[begin], &scene.N[begin], stays ? segment : -1};
    of_scene.on_device = on_device;
    return of_scene;
  };
  int segment = 0;
  for (int k = 0; k < scene.nz - 1; ++k) {
    const auto* here = &scene.N[scene.index(k, 0, 0)];
    const bool is_alike = std::equal(here, here + grid.plane(), here + grid.plane());
    step(stepper, slice(k, segment, stays && k > 0),
         slice(k + 1, is_alike ? segment : segment + 1, false));
    if (!is_alike) ++segment;
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

// The direct sum has the volume's bits, with and without uniform segments, from a field on the host
// or on the device.
TEST_P(Steps, DirectHasTheBitsOfTheVolume) {
  const Scene volume = by_volume(GetParam().make());
  for (const bool stays : {false, true}) {
    const Scene steps = stepped(GetParam().make(), {}, stays);
    EXPECT_EQ(steps.E, volume.E);
    EXPECT_EQ(steps.F, volume.F);
  }
}

// Transforms have different round-off. Uniform segments change nothing.
TEST_P(Steps, FastIsTheSameSum) {
  const Scene direct = stepped(GetParam().make(), {});
  const Scene fast = stepped(GetParam().make(), {.is_fast = true});
  for (int k = 0; k < direct.nz; ++k) {
    EXPECT_LE(difference(direct, fast, k).field, 1e-13) << k;
    EXPECT_LE(difference(direct, fast, k).flux, 1e-13) << k;
  }
  const Scene informed = stepped(GetParam().make(), {.is_fast = true}, true);
  EXPECT_EQ(informed.E, fast.E);
  EXPECT_EQ(informed.F, fast.F);
}

std::string name_of(const testing::TestParamInfo<NamedScene>& named) {
  return named.param.name;
}

INSTANTIATE_TEST_SUITE_P(Every, Steps, testing::ValuesIn(scene_table()), name_of);

// A slice on the device: what is copied, what is reported, and the field that the next step begins
// from.
TEST_F(DeviceTest, CopiesWhatIsRequestedAndReportsTheSlice) {
  Scene whole = scene_named("wide_guide");
  const Grid grid = whole.grid();
  const Scene at_first = whole;
  for (const bool is_fast : {false, true}) {
    SCOPED_TRACE(is_fast);
    whole = stepped(at_first, {.is_fast = is_fast});
    Scene scene = at_first;
    DeviceStepper stepper(grid, scene.options(), {.is_fast = is_fast, .blockSize = kBlock});
    const auto slice = [&](int k) {
      const std::size_t begin = scene.index(k, 0, 0);
      return Slice{&scene.E[begin], &scene.F[begin], &scene.N[begin]};
    };
    SliceRequest parts = {.E = true, .F = true, .flux = true, .first_row = 2, .end_row = 5};
    parts.first_column = 3, parts.end_column = 4;
    parts.state = true;
    Slice made = slice(1);
    stepper.start(slice(0), made, parts);
    const StepResult result = stepper.wait();
    made.on_device = true;
    double flux = 0;
    for (int j = 0; j < grid.ny; ++j)
      for (int i = 0; i < grid.nx; ++i) {
        const bool is_inside = i == 3 && j >= 2 && j < 5;
        EXPECT_EQ(scene.at(1, j, i), is_inside ? whole.at(1, j, i) : 0.0) << j << ' ' << i;
        flux += whole.F[whole.index(1, j, i)];
      }
    EXPECT_EQ(result.flux.has_value(), is_fast) << "the direct sum's is added up by the host";
    EXPECT_NEAR(result.flux.value_or(flux) / flux, 1.0, 1e-14);
    EXPECT_EQ(scene.F[scene.index(1, 9, 9)], is_fast ? 0.0 : whole.F[whole.index(1, 9, 9)]);
    EXPECT_EQ(result.state, FieldState::kLight);

    // After the start of the next step, the slice before it can still be fetched.
    stepper.start(made, slice(2), {.E = true, .state = true});
    stepper.fetch_field(made);
    for (int s = 0; s < grid.nx * grid.ny; ++s) EXPECT_EQ(scene.at(1, 0, s), whole.at(1, 0, s));
    stepper.wait();
    for (int s = 0; s < grid.nx * grid.ny; ++s) EXPECT_EQ(scene.at(2, 0, s), whole.at(2, 0, s));
  }
}

// The next step's slices, others or none are prefetched.
TEST_F(DeviceTest, StepsAlikeWhateverIsPrefetched) {
  enum { kNot, kRightly, kElsewhere };
  for (const char* name : {"index_of_its_own", "step_down_TE"})
    for (const bool is_fast : {false, true}) {
      const Scene whole = stepped(scene_named(name), {.is_fast = is_fast});
      for (const auto ahead : {kNot, kRightly, kElsewhere}) {
        SCOPED_TRACE(testing::Message() << name << is_fast << ahead);
        Scene scene = scene_named(name);
        DeviceStepper stepper(scene.grid(), scene.options(),
                              {.is_fast = is_fast, .blockSize = kBlock});
        const auto slice = [&](int k) {
          const std::size_t begin = scene.index(k, 0, 0);
          return Slice{&scene.E[begin], &scene.F[begin], &scene.N[begin], k};
        };
        for (int k = 0; k < scene.nz - 1; ++k) {
          stepper.start(slice(k), slice(k + 1), {.E = true, .F = true});
          if (ahead == kRightly && k + 2 < scene.nz) stepper.prefetch(slice(k + 1), slice(k + 2));
          if (ahead == kElsewhere) stepper.prefetch(slice(0), slice(0));
          stepper.wait();
        }
        EXPECT_EQ(scene.E, whole.E);
        EXPECT_EQ(scene.F, whole.F);
      }
    }
}

// The edge takes the same on the device as on the host.
TEST_F(DeviceTest, AppliesTheEdge) {
  const auto propagated = [](Scene& scene, Stepper& stepper, SliceDevice* device) {
    const Grid grid = scene.grid();
    EdgeMask edge(grid, 2.4 * std::max(grid.dx, grid.dy), 6 * grid.dx);
    FieldMask* masks[] = {&edge};
    WholeVolume slices(grid, scene.E.data(), scene.F.data(), scene.N.data(), nullptr, device);
    PropagationTotals totals;
    propagate(grid, slices, stepper, masks, {}, {}, kFromTheEntry, totals);
    return edge.taken();
  };
  Scene on_host = scene_named("odd_guide");
  const auto host = make_fast_stepper(on_host.grid(), on_host.options());
  const double taken = propagated(on_host, *host, nullptr);
  EXPECT_GT(taken, 0.0);
  for (const bool is_fast : {false, true}) {
    Scene on_device = scene_named("odd_guide");
    DeviceStepper stepper(on_device.grid(), on_device.options(),
                          {.is_fast = is_fast, .blockSize = kBlock});
    EXPECT_NEAR(propagated(on_device, stepper, &stepper) / taken, 1.0, 1e-9) << is_fast;
    for (int k = 0; k < on_host.nz; ++k) {
      EXPECT_LE(difference(on_host, on_device, k).field, 1e-9) << k;
      EXPECT_LE(difference(on_host, on_device, k).flux, 1e-9) << k;
    }
  }
}

// An axis without a spacing, x or y, takes the direct sum on host and device.
TEST(Stepper, LeavesAxesWithoutSpacingToTheDirectSum) {
  for (const bool is_y : {false, true}) {
    Scene scene(8, 8, 4, is_y ? 0.25 : 0.0, is_y ? 0.0 : 0.2, 0.15, 1.0);
    EXPECT_EQ(scene.propagate_by(make_fast_stepper).direct, 3) << is_y;
    DeviceStepper stepper(scene.grid(), scene.options(), {.is_fast = true});
    const StepResult result = step(stepper, {scene.E.data(), scene.F.data(), scene.N.data()},
                                   {&scene.E[64], &scene.F[64], &scene.N[64]});
    EXPECT_EQ(result.sum, Sum::kDirect) << is_y;
  }
}

}  // namespace
