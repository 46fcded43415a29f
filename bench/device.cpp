#include <cstdio>

#include "kernel/kernel.h"
#include "main/device_fast.h"
#include "main/results.h"
#include "measure.h"

namespace bench {
namespace {

// The scene on the device, as the run driver has it there.
class DeviceRun {
 public:
  explicit DeviceRun(Scene& scene) : scene_(scene) {
    run_.nx = scene.nx, run_.ny = scene.ny, run_.nz = scene.nz;
    run_.dx = scene.dx, run_.dy = scene.dy, run_.dz = scene.dz, run_.k0 = scene.k0;
    run_.N = scene.N.data(), run_.X = scene.X.data(), run_.Y = scene.Y.data();
    run_.KX = scene.KX.data(), run_.KY = scene.KY.data();
    is_there_ = upload(&E_, scene.E) && upload(&F_, scene.F) && upload(&N_, scene.N) &&
                upload(&KX_, scene.KX) && upload(&KY_, scene.KY) && upload(&X_, scene.X) &&
                upload(&Y_, scene.Y);
  }
  ~DeviceRun() {
    for (void* memory : {static_cast<void*>(E_), static_cast<void*>(F_), static_cast<void*>(N_),
                         static_cast<void*>(KX_), static_cast<void*>(KY_), static_cast<void*>(X_),
                         static_cast<void*>(Y_)})
      cudaFree(memory);
  }
  DeviceRun(const DeviceRun&) = delete;
  DeviceRun& operator=(const DeviceRun&) = delete;

  [[nodiscard]] bool is_there() const { return is_there_; }

  void direct() {
    naiveKernelWrapper_3D(E_, F_, N_, KX_, X_, KY_, Y_, run_.k0, run_.dz, run_.dy, run_.dx, run_.nz,
                          run_.ny, run_.nx, run_.blockSize, true, false, true);
    cudaDeviceSynchronize();
  }
  void fast() {
    propagate_fast_on_device(run_, E_, F_, N_, KX_, X_, KY_, Y_);
    cudaDeviceSynchronize();
  }
  void download() {
    cudaMemcpy(scene_.E.data(), E_, scene_.E.size() * sizeof(cpx), cudaMemcpyDeviceToHost);
  }

 private:
  template <typename Device, typename Host>
  static bool upload(Device** device, const std::vector<Host>& host) {
    const std::size_t bytes = host.size() * sizeof(Host);
    return cudaMalloc(reinterpret_cast<void**>(device), bytes) == cudaSuccess &&
           cudaMemcpy(*device, host.data(), bytes, cudaMemcpyHostToDevice) == cudaSuccess;
  }

  Scene& scene_;
  Run run_;
  bool is_there_ = false;
  double2 *E_ = nullptr, *N_ = nullptr, *KX_ = nullptr, *KY_ = nullptr;
  double *F_ = nullptr, *X_ = nullptr, *Y_ = nullptr;
};

// Coefficients may lie a notch of 1e-4 apart, so the bound is not round-off.
void verify(bool is_fast) {
  Scene cpu = growing_guide(32, 3);
  Scene on_device = cpu;
  cpu.propagate();
  DeviceRun run(on_device);
  is_fast ? run.fast() : run.direct();
  run.download();
  require_same(cpu, on_device, 1e-5, "device");
}

}  // namespace

void device() {
  std::printf("device kernels per step (%s), three pairs of indices\n",
              is_host_standin() ? "host stand-in" : "CUDA");
  {
    Scene scene = growing_guide(16, 2);
    if (!DeviceRun(scene).is_there()) {
      std::printf("no device\n");
      return;
    }
  }
  verify(false);
  verify(true);
  std::printf("%8s %14s %14s %12s %12s\n", "side", "zerith_3D ms", "direct ms", "ns a term",
              "fast ms");
  const std::vector<int> sides =
      is_host_standin() ? std::vector<int>{32, 48, 64} : std::vector<int>{64, 128, 256};
  for (const int side : sides) {
    Scene scene = growing_guide(side, 2);
    DeviceRun run(scene);
    const double steps = static_cast<double>(side) * side * side * side;
    const double cpu = side <= 128 ? median_seconds([&] { scene.propagate(); }, 3) : 0.0;
    run.direct();
    const double direct = median_seconds([&] { run.direct(); }, 5);
    run.fast();
    const double fast = median_seconds([&] { run.fast(); }, 5);
    std::printf("%8d %14.2f %14.3f %12.3f %12.3f\n", side, cpu * 1e3, direct * 1e3,
                direct / steps * 1e9, fast * 1e3);
  }
}

}  // namespace bench
