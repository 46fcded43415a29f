#include "main/branch.h"

#include <cstdio>

#include "diagnostics.h"
#include "main/hangings.h"
#include "main/identity.h"
#include "main/progress_line.h"
#include "main/ranks_of_run.h"
#include "main/stages.h"
#include "ranks/ranks.h"
#include "wisdom_state.h"
#include "wpm/health.h"
#include "wpm/progress.h"
#include "wpm/rolling_pair.h"
#include "wpm/stepper.h"
#include "wpm/whole_volume.h"

const BranchFiles& files_of(Branch branch) {
  static constexpr BranchFiles kDevice = {"E_gpu.csv", "EFlux_gpu.csv", "EFlux_gpu_Z.csv",
                                          "\t[GPU] flux0: ... \t ", 2};
  static constexpr BranchFiles kCpu = {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv",
                                       "\t[CPU] flux0: ... \t ", 1};
  return branch == Branch::kDevice ? kDevice : kCpu;
}

namespace {

std::unique_ptr<Slices> slices_of(const Run& run, const Stepper& stepper, cpx* E, double* F,
                                  const RunState* state) {
  if (!run.is_streamed) {
    auto volume = std::make_unique<WholeVolume>(run.grid, E, F, run.N.data(), run.stack.get());
    if (state != nullptr)
      std::copy(state->E.begin(), state->E.end(),
                E + static_cast<std::size_t>(state->slice) * run.grid.plane());
    return volume;
  }
  auto pair = std::make_unique<RollingPair>(
      *run.stack, run.window, my_rows(run, run.E.data()).data(), my_rows(run, run.F.data()).data());
  if (stepper.is_elsewhere()) pair->leave_undarkened();
  if (state != nullptr) pair->go_on_at(state->slice, my_rows(run, state->E.data()).data());
  return pair;
}

std::string counts_in_words(const Stepper& stepper) {
  const auto* cpu = dynamic_cast<const CpuStepper*>(&stepper);
  if (cpu == nullptr) return std::string("the last by ") + stepper.sum_taken();
  const SumCounts counts = cpu->counts();
  std::string text = std::to_string(counts.transforms) + " by transforms, " +
                     std::to_string(counts.direct) + " by the direct sum";
  if (counts.interpolated > 0)
    text += ", " + std::to_string(counts.interpolated) + " with pairs interpolated";
  if (counts.known > 0) text += ", " + std::to_string(counts.known) + " of nothing but NaN";
  return text;
}

// A table, for who watches or asked for progress.
void tell_where_the_time_went(const MarchTimes& times, double planning, const Stepper& stepper,
                              bool is_asked_for) {
  const auto line = [is_asked_for](const char* name, double seconds, const std::string& more) {
    char text[64];
    std::snprintf(text, sizeof text, "%-9s %10.3f s", name, seconds);
    (is_asked_for ? diagnostics::tell : diagnostics::note)(text + more);
  };
  line("planning", planning, "");
  line("painting", times.painting, "");
  line("steps", times.steps, "  " + counts_in_words(stepper));
  line("files", times.files, "");
}

// Of a run with --tolerance, what its steps were found to be off by.
void tell_error_found(const Run& run, const Stepper& stepper) {
  const auto* cpu = dynamic_cast<const CpuStepper*>(&stepper);
  if (cpu == nullptr || cpu->counts().interpolated == 0) return;
  const double tolerance = run.options.tolerance;
  char text[160];
  std::snprintf(text, sizeof text,
                "interpolated steps were off by at most %.2g of the largest |E|, at the samples "
                "compared with the exact sum; --tolerance allows for %.2g",
                cpu->error_found(), tolerance);
  if (cpu->error_found() > tolerance)
    diagnostics::warn(run.place(std::string(text) + "; ask for less to get it, or leave it out"));
  else
    (run.options.is_plain_progress ? diagnostics::tell : diagnostics::note)(text);
}

void tell_what_the_edge_took(const Run& run) {
  const cpx* E = run.E.data();
  double incident = 0;
  for (std::size_t s = 0; s < run.grid.plane(); ++s) incident += std::norm(E[s]);
  incident *= run.grid.dx * run.grid.dy;
  char share[32];
  std::snprintf(share, sizeof share, "%.3g", 100 * run.edge->taken() / incident);
  diagnostics::note("the absorbing edge took " + std::string(share) +
                    " % of the incident power, the sum of |E|^2");
}

}  // namespace

void empty_files_of(Branch branch) {
  const BranchFiles& files = files_of(branch);
  if (ranks::is_first()) empty_results({files.E, files.F, files.profile});
}

BranchResult march_branch(Run& run, Branch branch, Stepper& stepper, double planning_seconds,
                          cpx* E, double* F) {
  const Options& options = run.options;
  const RunState* state = run.resumed && run.resumed->branch == branch ? &*run.resumed : nullptr;
  if (state == nullptr) empty_files_of(branch);
  Hangings hangings(run, branch);
  const std::unique_ptr<Slices> slices = slices_of(run, stepper, E, F, state);
  MarchTimes times;
  if (state != nullptr) {
    hangings.go_back_to(run, *state);
    times.steps = state->step_seconds;
  }
  HealthWatch health(plane_of(run.grid, run.window));
  ProgressLine progress(run.grid, stepper, options.is_plain_progress);
  StopWatch stop(options.checkpoint, run.identity, options.checkpoint_seconds, branch, run.grid,
                 hangings.sinks(), times.steps, run.edge.get());
  const HeldSignals held;
  SliceWatcher* watchers[] = {&health, &progress, &stop};
  GatheringSink gathering(run, hangings.sinks());
  Sink* const all[] = {&gathering};
  const std::span<Sink* const> sinks =
      ranks::count() > 1 ? std::span<Sink* const>(all) : hangings.sinks();
  march(run.grid, *slices, stepper, hangings.masks(), sinks, watchers,
        state != nullptr ? state->slice : kFromTheEntry, times);
  if (!health.verdict().empty()) diagnostics::warn(run.place(health.verdict()));
  tell_where_the_time_went(times, planning_seconds, stepper, options.is_plain_progress);
  tell_error_found(run, stepper);
  if (run.edge != nullptr && ranks::is_first()) tell_what_the_edge_took(run);
  return {1000.0 * times.steps, hangings.flux_of_first()};
}

void store_results_of(const Run& run, Branch branch, const cpx* E, const double* F) {
  const BranchFiles& files = files_of(branch);
  const Options& o = run.options;
  const Grid& grid = run.grid;
  store_array(E, grid.nz, grid.ny, grid.nx, files.E, o.p, o.layer);
  store_array(F, grid.nz, grid.ny, grid.nx, files.F, o.p, o.layer);
  log_first_flux(run, branch, store_flux_profile(F, grid, files.profile));
}

void tell_health(const Run& run, const cpx* E) {
  HealthWatch health(run.grid);
  for (int k = 0; k < run.grid.nz; ++k)
    health.look_at(k, E + static_cast<std::size_t>(k) * run.grid.plane());
  if (!health.verdict().empty()) diagnostics::warn(run.place(health.verdict()));
}

void log_first_flux(const Run& run, Branch branch, double flux) {
  if (run.grid.nz < 1) return;  // there is no first slice
  const BranchFiles& files = files_of(branch);
  run.log << files.flux_label << flux;
  for (int i = 0; i < files.line_ends; ++i) run.log << std::endl;
}
