// The branch on the device, every phase timed, and the comparison with the CPU.
#include <cstdlib>

#include "diagnostics.h"
#include "kernel/kernel.h"
#include "main/device_fast.h"
#include "main/results.h"
#include "main/stages.h"

namespace {

// The device copies of the run's arrays, and what came of each allocation.
struct DeviceArrays {
  cufftDoubleComplex* d_E = nullptr;
  double* d_F = nullptr;
  double* d_X = nullptr;
  double* d_Y = nullptr;
  cufftDoubleComplex* d_N = nullptr;
  cufftDoubleComplex* d_KX = nullptr;
  cufftDoubleComplex* d_KY = nullptr;
  cudaError_t err_E, err_F, err_X, err_Y, err_N, err_KX, err_KY;

  explicit DeviceArrays(const Run& run)
      : err_E(allocate(&d_E, run.voxels())),
        err_F(allocate(&d_F, run.voxels())),
        err_X(allocate(&d_X, static_cast<std::size_t>(run.nx))),
        err_Y(allocate(&d_Y, static_cast<std::size_t>(run.ny))),
        err_N(allocate(&d_N, run.voxels())),
        err_KX(allocate(&d_KX, static_cast<std::size_t>(run.nx))),
        err_KY(allocate(&d_KY, static_cast<std::size_t>(run.ny))) {}

  void require_all() const;
  void release();

 private:
  template <typename T>
  static cudaError_t allocate(T** array, std::size_t count) {
    return cudaMalloc(reinterpret_cast<void**>(array), count * sizeof(T));
  }
};

// The message says CPU although the device ran out; it is the log's text.
void DeviceArrays::require_all() const {
  if (d_E != nullptr && d_F != nullptr && d_N != nullptr && d_KX != nullptr && d_X != nullptr &&
      d_KY != nullptr && d_Y != nullptr)
    return;
  std::cout << "\033[31mError\033[0m - CPU memory alloc" << std::endl;
  const std::pair<cudaError_t, const char*> statuses[] = {
      {err_E, "E"},   {err_F, "F"}, {err_N, "N"}, {err_KX, "KX"},
      {err_KY, "KY"}, {err_X, "X"}, {err_Y, "Y"},
  };
  for (const auto& [status, name] : statuses)
    if (status != cudaSuccess)
      std::cout << "\t\tError " << status << " on " << name
                << " alloc : " << cudaGetErrorString(status) << std::endl;
  diagnostics::fail(
      "not all arrays could be had on the device; give every size of the grid at least 1 and make "
      "it smaller if the device is full, or run on the CPU with -p alone");
}

void DeviceArrays::release() {
  cudaFree(d_E);
  cudaFree(d_F);
  cudaFree(d_N);
  cudaFree(d_X);
  cudaFree(d_Y);
  cudaFree(d_KX);
  cudaFree(d_KY);
}

cufftDoubleComplex* allocate_staging(std::size_t count, const char* name) {
  auto* array = static_cast<cufftDoubleComplex*>(std::calloc(count, sizeof(cufftDoubleComplex)));
  if (array == nullptr && count > 0)
    diagnostics::fail(std::string("no memory for ") + name + ", " +
                      std::to_string(count * sizeof(cufftDoubleComplex)) +
                      " bytes; make nx, ny or nz smaller");
  return array;
}

void allocate_host_copies(Run& run) {
  run.h_E = allocate_staging(run.voxels(), "h_E");
  run.h_N = allocate_staging(run.voxels(), "h_N");
  run.h_KX = allocate_staging(static_cast<std::size_t>(run.nx), "h_KX");
  run.h_KY = allocate_staging(static_cast<std::size_t>(run.ny), "h_KY");
}

template <typename T>
void upload(T* device, const T* host, std::size_t count) {
  cudaMemcpy(device, host, count * sizeof(T), cudaMemcpyHostToDevice);
}

template <typename T>
void download(T* host, const T* device, std::size_t count) {
  cudaMemcpy(host, device, count * sizeof(T), cudaMemcpyDeviceToHost);
}

void read_kernel_options(Run& run) {
  run.kernel = -1;
  run.read_option(&run.kernel, "k", "kernel");
  if (run.kernel == -1) run.kernel = DEFAULT_KERNEL;
  run.blockSize = -1;
  run.read_option(&run.blockSize, "b", "block-size");
  if (run.blockSize == -1) run.blockSize = DEFAULT_BLOCK_SIZE;
  if (run.blockSize > 1024) {
    std::cout << "\033[31mError\033[0m - Block size is too large" << std::endl;
    diagnostics::fail("a block edge of " + std::to_string(run.blockSize) +
                      " is over the limit of 1024; write -b 32 or less, since a block holds its "
                      "square in threads");
  }
}

// A kernel number other than 0 and 1 propagates nothing.
void propagate(Run& run, const DeviceArrays& device) {
  if (run.kernel == 1)
    std::cout << "\033[31mError\033[0m - Shared memory kernel not supported by this version!"
              << std::endl;
  if (run.kernel != 0 && run.kernel != 1) return;
  run.kernelTimer.start();
  if (run.is_fast && transforms_serve(run))
    propagate_fast_on_device(run, device.d_E, device.d_F, device.d_N, device.d_KX, device.d_X,
                             device.d_KY, device.d_Y);
  else
    naiveKernelWrapper_3D(device.d_E, device.d_F, device.d_N, device.d_KX, device.d_X, device.d_KY,
                          device.d_Y, run.k0, run.dz, run.dy, run.dx, run.nz, run.ny, run.nx,
                          run.blockSize, run.do_evanescent_modes, run.is_magnetic_field, run.is_TE);
  run.kernelTimer.stop();
}

void require_success() {
  cudaDeviceSynchronize();
  const cudaError_t error = cudaGetLastError();
  if (error == cudaSuccess) return;
  std::cout << "\033[31m***ERROR*** " << error << " - " << cudaGetErrorString(error) << "***\033[0m"
            << std::endl;
  diagnostics::fail(std::string("the device reports: ") + cudaGetErrorString(error) +
                    "; a block edge of 1 to 32 (-b) suits every device");
}

}  // namespace

void run_on_device(Run& run) {
  const Log& log = run.log;
  if (is_host_standin())
    diagnostics::note(
        "the device is the host stand-in: results are the device code's, times are not");
  log << "Applying simulation on GPU ..." << std::endl;
  log << "\tMemory allocation ...\t" << std::flush;
  run.mallocTimer.start();
  allocate_host_copies(run);
  DeviceArrays device(run);
  device.require_all();
  run.mallocTimer.stop();
  log_timed(log, run.mallocTimer);

  log << "\tConvert format ... \t";
  run.convertTimer.start();
  convert(run.E, run.h_E, static_cast<int>(run.voxels()));
  convert(run.N, run.h_N, static_cast<int>(run.voxels()));
  convert(run.KX, run.h_KX, run.nx);
  convert(run.KY, run.h_KY, run.ny);
  run.convertTimer.stop();
  log_timed(log, run.convertTimer);

  log << "\tCopy data (H2D) ...\t" << std::flush;
  run.H2DTimer.start();
  upload(device.d_E, run.h_E, run.voxels());
  upload(device.d_F, run.F, run.voxels());
  upload(device.d_N, run.h_N, run.voxels());
  upload(device.d_KX, run.h_KX, static_cast<std::size_t>(run.nx));
  upload(device.d_KY, run.h_KY, static_cast<std::size_t>(run.ny));
  upload(device.d_X, run.X, static_cast<std::size_t>(run.nx));
  upload(device.d_Y, run.Y, static_cast<std::size_t>(run.ny));
  run.H2DTimer.stop();
  log_timed(log, run.H2DTimer);

  log << "\tKernel call ...\t\t" << std::flush;
  read_kernel_options(run);
  propagate(run, device);
  require_success();
  log_timed(log, run.kernelTimer);

  log << "\tCopy data D2H ...\t" << std::flush;
  run.D2HTimer.start();
  download(run.h_E, device.d_E, run.voxels());
  download(run.F, device.d_F, run.voxels());
  run.D2HTimer.stop();
  log_timed(log, run.D2HTimer);
  log << std::endl;

  store_array(run.h_E, run.nz, run.ny, run.nx, "E_gpu.csv", run.p, run.s);
  store_array(run.F, run.nz, run.ny, run.nx, "EFlux_gpu.csv", run.p, run.s);
  store_flux_profile(run, "EFlux_gpu_Z.csv", "\t[GPU] flux0: ... \t ", 2);
  if (run.is_store)
    store_results(run.record, run.fname, run.kernel, run.blockSize, run.nz, run.ny, run.nx,
                  1000.0 * run.kernelTimer.getTime(), -1.0, -1.0);
  device.release();
}

void compare_branches(Run& run) {
  const double err = compare(run.h_E, run.E, run.nz, run.ny, run.nx);
  run.log << std::endl
          << "Max Error E [ max( (gpu(x,y,z)-cpu(x,y,z))/cpu(x,y,z) ) ]: " << err << std::endl;
  if (run.is_store)
    store_results(run.record, run.fname, run.kernel, run.blockSize, run.nz, run.ny, run.nx,
                  1000.0 * run.kernelTimer.getTime(), 1000.0 * run.cpuTimer.getTime(), err);
}
