#include "main/ranks_of_run.h"

#include <sstream>

#include "diagnostics.h"
#include "main/streaming.h"
#include "ranks/ranks.h"
#include "wpm/windows.h"

void require_shareable(const Run& run) {
  if (ranks::count() == 1) return;
  const Options& options = run.options;
  const auto refuse = [](const std::string& text) {
    diagnostics::fail(text + "; this run has " + std::to_string(ranks::count()) + " processes");
  };
  if (options.is_gpu)
    refuse("-g computes on the device of one process: leave it out, or start one process");
  if (options.tolerance > 0)
    refuse("--tolerance works within one process: leave it out, or start one process");
  if (!options.is_fast && !options.is_stream)
    refuse(
        "the reference holds whole volumes, in one process: share out a run with --fast, or with "
        "--stream for the direct sum");
  if (!can_be_streamed(run))
    refuse(run.place("whole volumes are held by one process alone" + why_not_streamed(run)));
}

void share_wavelength(Run& run) {
  run.lambda = ranks::from_first(run.lambda);
  run.k0 = ranks::from_first(run.k0);
  run.entry_index = ranks::from_first(run.entry_index);
}

void share_resumed(Run& run) {
  if (ranks::count() == 1) return;
  const bool is_resumed = ranks::any(run.resumed.has_value());
  if (!is_resumed) return;
  if (!run.resumed) run.resumed.emplace();
  RunState& state = *run.resumed;
  state.slice = ranks::most(ranks::is_first() ? state.slice : 0);
  state.step_seconds = ranks::from_first(state.step_seconds);
  state.taken_by_edge = ranks::from_first(state.taken_by_edge);
}

namespace {

template <typename T>
std::vector<T> window_of(const Run& run, const T* slice) {
  if (ranks::count() == 1) return {slice, slice + run.grid.plane()};
  std::vector<T> window(wpm::samples_of(run.grid, run.window));
  wpm::scatter_slice(run.grid, slice, window.data());
  return window;
}

}  // namespace

std::vector<cpx> my_window(const Run& run, const cpx* slice) {
  return window_of(run, slice);
}
std::vector<double> my_window(const Run& run, const double* slice) {
  return window_of(run, slice);
}

GatheringSink::GatheringSink(const Run& run, std::vector<Sink*> sinks)
    : grid_(run.grid), sinks_(std::move(sinks)) {
  if (!ranks::is_first()) return;
  E_.resize(grid_.plane());
  N_.resize(grid_.plane());
  F_.resize(grid_.plane());
}

void GatheringSink::take(int k, const Slice& window) {
  wpm::gather_rows(grid_, window.E, 0, grid_.ny, E_.data());
  wpm::gather_rows(grid_, window.F, 0, grid_.ny, F_.data());
  if (stretch_ != window.stretch || stretch_ < 0)
    wpm::gather_rows(grid_, window.N, 0, grid_.ny, N_.data());
  stretch_ = window.stretch;
  for (Sink* sink : sinks_) sink->take(k, {E_.data(), F_.data(), N_.data(), window.stretch});
}

void GatheringSink::finish() {
  for (Sink* sink : sinks_) sink->finish();
}
