// The branch on the CPU.
#include <algorithm>

#include "chTimer.h"
#include "main/branch.h"
#include "main/stages.h"
#include "main/streaming.h"
#include "ranks/ranks.h"
#include "wpm/stepper.h"

namespace {

// The reference: whole volumes, one call.
double propagate_reference(Run& run) {
  const Grid& g = run.grid;
  const wpm::Axes& a = run.axes;
  const struct_sysOptions& so = run.description.so;
  if (g.plane() > 0) empty_files_of(Backend::kCpu);  // an empty slice has no transform
  ChTimer cpuTimer;
  cpuTimer.start();
  zerith_3D(run.E.data(), run.F.data(), run.N.data(), a.KX.data(), a.X.data(), a.KY.data(),
            a.Y.data(), run.k0, g.dz, g.dy, g.dx, g.nz, g.ny, g.nx, so.evanescent, so.hfield, so.p);
  cpuTimer.stop();
  check_field(run, run.E.data());
  return 1000.0 * cpuTimer.getTime();
}

}  // namespace

void run_on_cpu(Run& run) {
  const Log& log = run.log;
  log << "Applying simulation on CPU ... " << std::flush;
  // The first slice stays as it is.
  if (!run.is_streamed && run.grid.nz > 1)
    std::fill(run.F.data() + run.grid.plane(), run.F.data() + run.grid.voxels(), 0.0);

  double flux_of_first = 0;
  if (needs_march(run)) {
    const auto make = run.options.is_fast ? make_fast_stepper : make_direct_stepper;
    ChTimer planTimer;
    planTimer.start();
    const std::unique_ptr<Stepper> stepper = make(run.grid, run.step_options());
    planTimer.stop();
    const BackendResult result = propagate_on(run, Backend::kCpu, *stepper, nullptr,
                                              planTimer.getTime(), run.E.data(), run.F.data());
    run.cpu_ms = result.step_ms;
    flux_of_first = result.flux_of_first;
  } else {
    run.cpu_ms = propagate_reference(run);
  }
  log_timed(log, run.cpu_ms);
  log << std::endl;

  if (run.is_streamed)
    log_first_flux(run, Backend::kCpu, flux_of_first);
  else
    store_results_of(run, Backend::kCpu, run.E.data(), run.F.data());
  // A CPU row carries its time under kernel_time; the record is defined so, its kernel and block
  // being the device's where that has run.
  record_row(run, run.cpu_ms, -1.0, -1.0);
}
