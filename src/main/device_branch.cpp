// The branch on the device, every phase timed, and the comparison with the CPU.
#include <algorithm>

#include "chTimer.h"
#include "diagnostics.h"
#include "kernel/kernel.h"
#include "main/branch.h"
#include "main/device_arrays.h"
#include "main/device_stepper.h"
#include "main/stages.h"
#include "main/streaming.h"

namespace {

// Runs work between the two words of a timed phase on the log.
template <typename Work>
void phase(const Log& log, const char* label, Work work) {
  ChTimer timer;
  log << label << std::flush;
  timer.start();
  work();
  timer.stop();
  log_timed(log, 1000.0 * timer.getTime());
}

void require_kernel_options(const Options& options) {
  options.require_value("k", "kernel");
  options.require_value("b", "block-size");
  if (options.blockSize <= 1024) return;
  std::cout << "\033[31mError\033[0m - Block size is too large" << std::endl;
  diagnostics::fail("a block edge of " + std::to_string(options.blockSize) +
                    " is over the limit of 1024; write -b 32 or less, since a block holds its "
                    "square in threads");
}

void require_no_error() {
  const cudaError_t error = cudaGetLastError();
  if (error == cudaSuccess) return;
  std::cout << "\033[31m***ERROR*** " << error << " - " << cudaGetErrorString(error) << "***\033[0m"
            << std::endl;
  diagnostics::fail(std::string("the device reports: ") + cudaGetErrorString(error) +
                    (error == cudaErrorInvalidConfiguration
                         ? "; a block edge of 1 to 32 (-b) suits every device"
                         : "; is another program using it up? The CPU runs the same with -p"));
}

void require_success() {
  cudaDeviceSynchronize();
  require_no_error();
}

void report_shared_memory_kernel(const Options& options) {
  if (options.kernel == 1)
    std::cout << "\033[31mError\033[0m - Shared memory kernel not supported by this version!"
              << std::endl;
}

// The direct kernel on whole volumes. A kernel number other than 0 and 1 propagates
// nothing.
double propagate_volumes(const Run& run, const DeviceArrays& d) {
  const Options& options = run.options;
  report_shared_memory_kernel(options);
  if (options.kernel != 0 && options.kernel != 1) return 0;
  const Grid& g = run.grid;
  const struct_sysOptions& so = run.description.so;
  ChTimer kernelTimer;
  kernelTimer.start();
  naiveKernelWrapper_3D(d.E.data(), d.F.data(), d.N.data(), d.KX.data(), d.X.data(), d.KY.data(),
                        d.Y.data(), run.k0, g.dz, g.dy, g.dx, g.nz, g.ny, g.nx, options.blockSize,
                        so.evanescent, so.hfield, run.is_TE);
  kernelTimer.stop();
  return 1000.0 * kernelTimer.getTime();
}

void run_volumes(Run& run) {
  const Log& log = run.log;
  std::optional<DeviceArrays> device;
  phase(log, "\tMemory allocation ...\t", [&] {
    run.h_E = HostArray<cufftDoubleComplex>(run.grid.voxels(), "h_E");
    device.emplace(run.grid);
  });
  HostCopies copies;
  phase(log, "\tConvert format ... \t", [&] { copies = converted(run); });
  phase(log, "\tCopy data (H2D) ...\t", [&] { device->upload(run, copies); });

  log << "\tKernel call ...\t\t" << std::flush;
  require_kernel_options(run.options);
  run.kernel_ms = propagate_volumes(run, *device);
  require_no_error();  // of the launches, which return before the device is done
  empty_files_of(Backend::kDevice);
  require_success();
  log_timed(log, run.kernel_ms);
  phase(log, "\tCopy data D2H ...\t", [&] { device->download(run); });
  log << std::endl;
  check_field(run, reinterpret_cast<const cpx*>(run.h_E.data()));
}

// Slice by slice: the device holds planes, and what the volumes' phases do is part of the steps.
double run_steps(Run& run) {
  const Log& log = run.log;
  cpx* E = nullptr;
  std::unique_ptr<DeviceStepper> stepper;
  ChTimer planTimer;
  phase(log, "\tMemory allocation ...\t", [&] {
    if (!run.is_streamed) {
      run.h_E = HostArray<cufftDoubleComplex>(run.grid.voxels(), "h_E");
      E = reinterpret_cast<cpx*>(run.h_E.data());
      std::copy_n(run.E.data(), run.grid.plane(), E);
    }
    planTimer.start();
    stepper = std::make_unique<DeviceStepper>(
        run.grid, run.step_options(),
        DeviceChoice{run.options.is_fast, run.is_TE, run.options.blockSize});
    planTimer.stop();
  });
  phase(log, "\tConvert format ... \t", [] {});
  phase(log, "\tCopy data (H2D) ...\t", [] {});
  log << "\tKernel call ...\t\t" << std::flush;
  require_kernel_options(run.options);
  report_shared_memory_kernel(run.options);
  const BackendResult result = propagate_on(run, Backend::kDevice, *stepper, stepper.get(),
                                            planTimer.getTime(), E, run.F.data());
  run.kernel_ms = result.step_ms;
  require_success();
  log_timed(log, run.kernel_ms);
  phase(log, "\tCopy data D2H ...\t", [] {});
  log << std::endl;
  return result.flux_of_first;
}

}  // namespace

void run_on_device(Run& run) {
  if (is_host_standin())
    diagnostics::note(
        "the device is the host stand-in: results are the device code's, times are not");
  run.log << "Applying simulation on GPU ..." << std::endl;
  if (run.resumed && run.resumed->backend == Backend::kCpu) return;  // its files stand
  double flux_of_first = 0;
  if (needs_march(run) && device_can_step(run.options) && run.grid.voxels() > 0)
    flux_of_first = run_steps(run);
  else
    run_volumes(run);
  if (run.is_streamed)
    log_first_flux(run, Backend::kDevice, flux_of_first);
  else
    store_results_of(run, Backend::kDevice, reinterpret_cast<const cpx*>(run.h_E.data()),
                     run.F.data());
  record_row(run, run.kernel_ms, -1.0, -1.0);
}

void compare_branches(Run& run) {
  const Grid& grid = run.grid;
  const double err = compare(run.h_E.data(), run.E.data(), grid.nz, grid.ny, grid.nx);
  run.log << std::endl
          << "Max Error E [ max( (gpu(x,y,z)-cpu(x,y,z))/cpu(x,y,z) ) ]: " << err << std::endl;
  record_row(run, run.kernel_ms, run.cpu_ms, err);
}
