// One propagation of a run slice by slice: its stepper, its slices and where they go.
#pragma once

#include <memory>
#include <vector>

#include "io/io.h"
#include "main/checkpoint.h"
#include "main/run.h"

// The names of a backend's files and its words on the log.
struct BackendFiles {
  const char* E;
  const char* F;
  const char* profile;
  const char* flux_label;
  int line_ends;  // after the flux of the first slice
};
const BackendFiles& files_of(Backend backend);

// Empties the backend's files. Called after the last check that can refuse the backend.
void empty_files_of(Backend backend);

// What a propagation returns.
struct BackendResult {
  double step_ms = 0;        // without planning, painting and files
  double flux_of_first = 0;  // of a streamed run, whose profile is written
};

// Propagates by the stepper. A streamed run writes its files on the way, another one leaves E and F
// [nz][ny][nx] filled, whose slices after the first must be 0; both null in a streamed run. Resumes
// from the run's checkpoint if there is one for this backend.
// device: the stepper's, null on the host. planning_seconds: what making it took, to be reported.
BackendResult propagate_on(Run& run, Backend backend, Stepper& stepper, SliceDevice* device,
                           double planning_seconds, cpx* E, double* F);

// Writes the backend's cross-sections and its profile from whole volumes.
void store_results_of(const Run& run, Backend backend, const cpx* E, const double* F);

// Logs the flux of the first slice as the backend does.
void log_first_flux(const Run& run, Backend backend, double flux);
