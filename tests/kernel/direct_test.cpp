// The samples that a launch of the direct kernel reaches, and what it adds there.
#include <algorithm>

#include "kernel/device_test.h"
#include "kernel/kernel.h"
#include "support/scene.h"

namespace {

using Direct = DeviceTest;

// Threads are laid out for ny by nx and read as nx by ny. If nx and ny differ, some have no sample
// and some samples no thread. The kernel adds to the target slice. A spectrum below the threshold
// adds nothing. At normal incidence the wavenumber takes no root: in index 0 it would be 0/0.
TEST_F(Direct, AddsWhatIsNotTooWeakWhereItReaches) {
  const struct {
    int nx, ny, B;
    double n, amplitude;
    bool is_kept;
  } rows[] = {{8, 8, 5, 1.5, 1, true},        {6, 4, 1, 1.5, 1, true},
              {40, 3, 5, 1.5, 1, true},       {3, 40, 5, 1.5, 1, true},
              {33, 34, 32, 1.5, 1, true},     {4, 4, 16, 0, 1, true},
              {4, 4, 16, 1, 1e-4 / 16, true}, {4, 4, 16, 1, 9e-5 / 16, false}};
  for (const auto& [nx, ny, B, n, amplitude, is_kept] : rows) {
    Scene scene(nx, ny, 2, 0.25, 0.25, 0.25, 1.0);
    scene.fill(0, 2, n);
    std::fill_n(scene.E.begin(), nx * ny, amplitude);
    std::fill_n(scene.E.begin() + nx * ny, nx * ny, cpx(0, 7));
    std::fill_n(scene.F.begin() + nx * ny, nx * ny, 3);
    const DeviceArray<cpx> E(scene.E), N(scene.N), KX(scene.KX), KY(scene.KY);
    const DeviceArray<double> F(scene.F), X(scene.X), Y(scene.Y);
    naiveKernelWrapper_3D(E, F, N, KX, X, KY, Y, scene.k0, scene.dz, scene.dy, scene.dx, 2, ny, nx,
                          B, true, false, true);
    ASSERT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    scene.E = E.download();
    scene.F = F.download();
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i) {
        const bool is_covered = i < (ny + B - 1) / B * B && j < (nx + B - 1) / B * B;
        const double added = is_covered && is_kept ? amplitude : 0;
        const cpx expected = cpx(0, 7) + std::polar(added, n * scene.k0 * scene.dz);
        ASSERT_LE(std::abs(scene.at(1, j, i) - expected), 1e-13) << nx << ' ' << ny << ' ' << n;
        ASSERT_NEAR(scene.F[scene.index(1, j, i)], 3 + n * scene.k0 * added * added, 1e-12);
      }
  }
}

}  // namespace
