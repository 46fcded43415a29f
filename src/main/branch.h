// One propagation of a run through the march: what it steps through and where its slices go.
#pragma once

#include <memory>
#include <vector>

#include "io/io.h"
#include "main/checkpoint.h"
#include "main/run.h"

// The names of a branch's files and its words on the log.
struct BranchFiles {
  const char* E;
  const char* F;
  const char* profile;
  const char* flux_label;
  int line_ends;  // behind the flux of the first slice
};
const BranchFiles& files_of(Branch branch);

// Empties the branch's files. Called after the last check that can refuse the branch.
void empty_files_of(Branch branch);

// What a march left behind.
struct BranchResult {
  double step_ms = 0;        // without planning, painting and files
  double flux_of_first = 0;  // of a streamed run, whose profile is written
};

// Propagates by the stepper. A streamed run writes its files on the way, another one leaves E and F
// [nz][ny][nx] filled, whose slices behind the first must be 0; both null in a streamed run. Goes
// on from the run's checkpoint if there is one for this branch.
// planning_seconds: what making the stepper took, to be told with the rest.
BranchResult march_branch(Run& run, Branch branch, Stepper& stepper, double planning_seconds,
                          cpx* E, double* F);

// Writes the branch's cross-sections and its profile from whole volumes.
void store_results_of(const Run& run, Branch branch, const cpx* E, const double* F);

// Logs the flux of the first slice as the branch does.
void log_first_flux(const Run& run, Branch branch, double flux);
