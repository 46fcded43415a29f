// The run flags, the branch on the CPU, and the flux profile that both branches write.
#include <omp.h>

#include <algorithm>

#include "chCommandLine.h"
#include "diagnostics.h"
#include "kernel/kernel.h"
#include "main/output_file.h"
#include "main/results.h"
#include "main/stages.h"
#include "wpm/progress.h"

namespace {

void warn_of_unwritable_results(const Run& run) {
  std::vector<std::string> names;
  if (run.is_gpu) names.insert(names.end(), {"E_gpu.csv", "EFlux_gpu.csv", "EFlux_gpu_Z.csv"});
  if (run.is_cpu) names.insert(names.end(), {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv"});
  if (run.is_store && !names.empty()) names.push_back(run.record);
  for (const std::string& name : names) warn_if_unwritable(name);
}

// The number of OpenMP threads of the propagators, the host stand-in's included: 1 unless the user
// says otherwise, so that times compare from run to run; 0 for all cores. Results do not depend
// on it, those of --fast to round-off.
void set_threads(const Run& run) {
  int threads = 1;
  chCommandLineGet(&threads, "threads", run.argc, run.argv);
  if (threads < 0)
    diagnostics::fail("--threads " + std::to_string(threads) +
                      ": write the number of threads, or 0 for all cores");
  omp_set_num_threads(threads == 0 ? omp_get_num_procs() : threads);
}

// What the reference would take at most, every plane wave kept.
double reference_seconds(const Run& run) {
  constexpr double kSecondsPerTerm = 25e-9;
  const auto samples = static_cast<double>(run.plane_samples());
  return std::max(0, run.nz - 1) * samples * samples * kSecondsPerTerm / omp_get_max_threads();
}

void tell_how_it_is_summed(const Run& run) {
  constexpr double kLongRun = 30.0;  // s
  const double seconds = reference_seconds(run);
  if (run.is_fast)
    diagnostics::note("plane waves are summed by transforms (--fast)");
  else if (seconds > kLongRun)
    diagnostics::note("this run takes up to about " + duration_in_words(seconds) +
                      "; --fast gives the same field sooner");
}

}  // namespace

void read_run_flags(Run& run) {
  const Log& log = run.log;
  run.is_store = run.has_option("r", "store-results");
  if (run.is_store) log << "option -r : store results" << std::endl;
  run.is_cpu = run.has_option("p", "run-cpu");
  if (run.is_cpu) log << "option -p : --run-cpu" << std::endl;
  run.is_gpu = run.has_option("g", "run-gpu");
  if (run.is_gpu) log << "option -g : --run-gpu" << std::endl;
  run.is_compare = run.has_option("c", "compare");
  if (run.is_compare) log << "option -c : --compare" << std::endl << std::endl;

  run.is_fast = chCommandLineGetBool("fast", run.argc, run.argv);
  set_threads(run);

  // A record without a name must be noticed before the propagation, not behind it.
  if (run.is_store && (run.is_cpu || run.is_gpu))
    run.read_option(&run.record, "r", "store-results");
  warn_of_unwritable_results(run);
  if (run.is_cpu || (run.is_gpu && is_host_standin())) tell_how_it_is_summed(run);
}

void store_flux_profile(const Run& run, const std::string& filename, const char* label,
                        int line_ends) {
  OutputFile file(filename, OutputFile::Mode::kReplace);
  file << '\n';
  double eflux0 = 0.0;
  for (int k = 0; k < run.nz; ++k) {
    const double* slice = run.F + static_cast<std::size_t>(k) * run.plane_samples();
    double eflux = 0.0;
    for (std::size_t i = 0; i < run.plane_samples(); ++i) eflux += slice[i];
    if (k == 0) {
      eflux0 = eflux;
      run.log << label << eflux0;
      for (int i = 0; i < line_ends; ++i) run.log << std::endl;
    }
    file << eflux / eflux0;
    if (k < run.nz - 1) file << ',';
  }
  file << '\n';
}

void run_on_cpu(Run& run) {
  const Log& log = run.log;
  log << "Applying simulation on CPU ... " << std::flush;
  if (run.nz > 1) std::fill(run.F + run.plane_samples(), run.F + run.voxels(), 0.0);
  const auto propagate = run.is_fast ? zerith_fast_3D : zerith_3D;
  run.cpuTimer.start();
  propagate(run.E, run.F, run.N, run.KX, run.X, run.KY, run.Y, run.k0, run.dz, run.dy, run.dx,
            run.nz, run.ny, run.nx, run.do_evanescent_modes, run.is_magnetic_field, run.pol);
  run.cpuTimer.stop();
  log_timed(log, run.cpuTimer);
  log << std::endl;

  store_array(run.E, run.nz, run.ny, run.nx, "E_cpu.csv", run.p, run.s);
  store_array(run.F, run.nz, run.ny, run.nx, "EFlux_cpu.csv", run.p, run.s);
  store_flux_profile(run, "EFlux_cpu_Z.csv", "\t[CPU] flux0: ... \t ", 1);
  // A CPU row carries its time under kernel_time; the record is defined so.
  if (run.is_store)
    store_results(run.record, run.fname, run.kernel, run.blockSize, run.nz, run.ny, run.nx,
                  1000.0 * run.cpuTimer.getTime(), -1.0, -1.0);
}
