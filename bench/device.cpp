#include <cufft.h>

#include <cstdio>
#include <memory>

#include "main/device_stepper.h"
#include "measure.h"

namespace bench {
namespace {

Grid grid_of(const Scene& scene) {
  Grid grid;
  grid.nx = scene.nx, grid.ny = scene.ny, grid.nz = scene.nz;
  grid.dx = scene.dx, grid.dy = scene.dy, grid.dz = scene.dz;
  return grid;
}

std::unique_ptr<DeviceStepper> stepper_of(const Scene& scene, bool is_fast) {
  const StepOptions options = {scene.k0, scene.dz, true, false, scene.pol};
  return std::make_unique<DeviceStepper>(grid_of(scene), options, DeviceChoice{.is_fast = is_fast});
}

Slice slice_of(Scene& scene, int k) {
  const std::size_t begin = scene.index(k, 0, 0);
  return {&scene.E[begin], &scene.F[begin], &scene.N[begin], k};
}

// Coefficients may lie a notch of 1e-4 apart, so the bound is not round-off.
void verify(bool is_fast) {
  Scene cpu = growing_guide(32, 3);
  Scene on_device = cpu;
  cpu.propagate();
  const auto stepper = stepper_of(on_device, is_fast);
  for (int k = 0; k < 2; ++k) step(*stepper, slice_of(on_device, k), slice_of(on_device, k + 1));
  require_same(cpu, on_device, 1e-5, "device");
}

// Milliseconds of a step whose slices are those of the last one, with the field where it is.
double step_ms(Scene& scene, bool is_fast, int steps) {
  const auto stepper = stepper_of(scene, is_fast);
  Slice here = slice_of(scene, 0);
  step(*stepper, here, slice_of(scene, 1));
  here.on_device = true;
  const auto run = [&] {
    for (int step = 0; step < steps; ++step) stepper->start(here, slice_of(scene, 1), {});
    cudaDeviceSynchronize();
  };
  run();
  return median_seconds(run, 5) * 1e3 / steps;
}

// Milliseconds of one forward and pairs inverse transforms of cuFFT.
double limit_ms(int side, int pairs, int runs) {
  const std::size_t samples = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
  double2* planes = nullptr;
  cufftHandle plan = 0;
  if (cudaMalloc(reinterpret_cast<void**>(&planes), 2 * samples * sizeof(double2)) != cudaSuccess ||
      cufftPlan2d(&plan, side, side, CUFFT_Z2Z) != CUFFT_SUCCESS)
    return 0.0;
  cudaMemset(planes, 0, 2 * samples * sizeof(double2));
  const auto run = [&] {
    for (int i = 0; i < runs; ++i) {
      cufftExecZ2Z(plan, planes, planes + samples, CUFFT_FORWARD);
      for (int pair = 0; pair < pairs; ++pair)
        cufftExecZ2Z(plan, planes + samples, planes + samples, CUFFT_INVERSE);
    }
    cudaDeviceSynchronize();
  };
  run();
  const double ms = median_seconds(run, 5) * 1e3 / runs;
  cufftDestroy(plan);
  cudaFree(planes);
  return ms;
}

}  // namespace

void device() {
  constexpr int kPairs = 3;
  std::printf("device, a step of unchanged slices (%s), %d pairs of indices\n",
              is_host_standin() ? "host stand-in" : "CUDA", kPairs);
  void* probe = nullptr;
  if (cudaMalloc(&probe, 1) != cudaSuccess) {
    std::printf("no device\n");
    return;
  }
  cudaFree(probe);
  verify(false);
  verify(true);
  std::printf("%8s %14s %12s %12s %12s %14s\n", "side", "direct ms", "fast ms", "limit ms",
              "fast/limit", "Mvoxel/s");
  const std::vector<int> sides =
      is_host_standin() ? std::vector<int>{32, 64, 128} : std::vector<int>{256, 512, 1024, 2048};
  for (const int side : sides) {
    Scene scene = growing_guide(side, 2);
    const double direct = side <= (is_host_standin() ? 64 : 256) ? step_ms(scene, false, 1) : 0.0;
    const double fast = step_ms(scene, true, 20);
    const double limit = limit_ms(side, kPairs, 20);
    std::printf("%8d %14.2f %12.3f %12.3f %12.2f %14.1f\n", side, direct, fast, limit, fast / limit,
                static_cast<double>(side) * side / fast / 1e3);
  }
}

}  // namespace bench
