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
#include "wpm/rolling_pair.h"
#include "wpm/stepper.h"
#include "wpm/whole_volume.h"

const BackendFiles& files_of(Backend backend) {
  static constexpr BackendFiles kDevice = {"E_gpu.csv", "EFlux_gpu.csv", "EFlux_gpu_Z.csv",
                                           "\t[GPU] flux0: ... \t ", 2};
  static constexpr BackendFiles kCpu = {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv",
                                        "\t[CPU] flux0: ... \t ", 1};
  return backend == Backend::kDevice ? kDevice : kCpu;
}

namespace {

std::unique_ptr<Slices> slices_of(const Run& run, SliceDevice* device, cpx* E, double* F,
                                  const RunState* state) {
  if (!run.is_streamed) {
    if (state != nullptr)
      std::copy(state->E.begin(), state->E.end(),
                E + static_cast<std::size_t>(state->slice) * run.grid.plane());
    return std::make_unique<WholeVolume>(run.grid, E, F, run.N.data(), run.stack.get(), device);
  }
  auto pair =
      std::make_unique<RollingPair>(*run.stack, run.window, my_rows(run, run.E.data()).data(),
                                    my_rows(run, run.F.data()).data(), device);
  if (state != nullptr) pair->begin_at(state->slice, my_rows(run, state->E.data()).data());
  return pair;
}

std::string counts_in_words(const PropagationTotals& totals) {
  std::string text = std::to_string(totals.transforms) + " by transforms, " +
                     std::to_string(totals.direct) + " by the direct sum";
  if (totals.interpolated > 0)
    text += ", " + std::to_string(totals.interpolated) + " with pairs interpolated";
  if (totals.known > 0) text += ", " + std::to_string(totals.known) + " of nothing but NaN";
  return text;
}

// A table, on a terminal or if progress was requested.
void report_times(const PropagationTotals& totals, double planning, bool is_asked_for) {
  const auto line = [is_asked_for](const char* name, double seconds, const std::string& more) {
    char text[64];
    std::snprintf(text, sizeof text, "%-9s %10.3f s", name, seconds);
    (is_asked_for ? diagnostics::tell : diagnostics::note)(text + more);
  };
  line("planning", planning, "");
  line("painting", totals.painting, "");
  line("steps", totals.steps, "  " + counts_in_words(totals));
  line("files", totals.files, "");
}

// Of a run with --tolerance, the error of its steps that was found.
void report_error(const Run& run, const PropagationTotals& totals) {
  if (totals.interpolated == 0) return;
  const double tolerance = run.options.tolerance;
  char text[160];
  std::snprintf(text, sizeof text,
                "interpolated steps were off by at most %.2g of the largest |E|, at the samples "
                "compared with the exact sum; --tolerance allows for %.2g",
                totals.error, tolerance);
  if (totals.error > tolerance)
    diagnostics::warn(run.place(std::string(text) + "; ask for less to get it, or leave it out"));
  else
    (run.options.is_plain_progress ? diagnostics::tell : diagnostics::note)(text);
}

void report_edge(const Run& run) {
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

void empty_files_of(Backend backend) {
  const BackendFiles& files = files_of(backend);
  if (ranks::is_first()) empty_results({files.E, files.F, files.profile});
}

BackendResult propagate_on(Run& run, Backend backend, Stepper& stepper, SliceDevice* device,
                           double planning_seconds, cpx* E, double* F) {
  const Options& options = run.options;
  const RunState* state = run.resumed && run.resumed->backend == backend ? &*run.resumed : nullptr;
  if (state == nullptr) empty_files_of(backend);
  RunOutputs outputs(run, backend);
  const std::unique_ptr<Slices> slices = slices_of(run, device, E, F, state);
  PropagationTotals totals;
  if (state != nullptr) {
    outputs.restore(run, *state);
    totals.steps = state->step_seconds;
  }
  FieldCheck check(slices->samples());
  ProgressLine progress(run.grid, options.is_plain_progress);
  Checkpointer checkpointer(options.checkpoint, run.identity, options.checkpoint_seconds, backend,
                            run.grid, outputs.sinks(), totals.steps, run.edge.get());
  const HeldSignals held;
  SliceObserver* observers[] = {&check, &progress, &checkpointer};
  GatheringSink gathering(run, outputs.sinks());
  Sink* const all[] = {&gathering};
  const std::span<Sink* const> sinks =
      ranks::count() > 1 ? std::span<Sink* const>(all) : outputs.sinks();
  propagate(run.grid, *slices, stepper, outputs.masks(), sinks, observers,
            state != nullptr ? state->slice : kFromTheEntry, totals);
  if (!check.verdict().empty()) diagnostics::warn(run.place(check.verdict()));
  report_times(totals, planning_seconds, options.is_plain_progress);
  report_error(run, totals);
  if (run.edge != nullptr && ranks::is_first()) report_edge(run);
  return {1000.0 * totals.steps, outputs.flux_of_first()};
}

void store_results_of(const Run& run, Backend backend, const cpx* E, const double* F) {
  const BackendFiles& files = files_of(backend);
  const Options& o = run.options;
  const Grid& grid = run.grid;
  store_array(E, grid.nz, grid.ny, grid.nx, files.E, o.p, o.layer);
  store_array(F, grid.nz, grid.ny, grid.nx, files.F, o.p, o.layer);
  log_first_flux(run, backend, store_flux_profile(F, grid, files.profile));
}

void check_field(const Run& run, const cpx* E) {
  FieldCheck check(run.grid);
  for (int k = 0; k < run.grid.nz; ++k)
    check.slice_done(
        k, {const_cast<cpx*>(E) + static_cast<std::size_t>(k) * run.grid.plane(), nullptr, nullptr},
        {});
  if (!check.verdict().empty()) diagnostics::warn(run.place(check.verdict()));
}

void log_first_flux(const Run& run, Backend backend, double flux) {
  if (run.grid.nz < 1) return;  // there is no first slice
  const BackendFiles& files = files_of(backend);
  run.log << files.flux_label << flux;
  for (int i = 0; i < files.line_ends; ++i) run.log << std::endl;
}
