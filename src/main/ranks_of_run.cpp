#include "main/ranks_of_run.h"

#include <algorithm>
#include <cstring>

#include "diagnostics.h"
#include "main/streaming.h"
#include "ranks/ranks.h"

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

void share_entry_index(Run& run) {
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
std::size_t row_bytes(const Grid& grid) {
  return static_cast<std::size_t>(grid.nx) * sizeof(T);
}

template <typename T>
std::vector<T> rows_of(const Run& run, const T* slice) {
  std::vector<T> rows(plane_of(run.grid, run.window));
  ranks::scatter_lines(slice, rows.data(), run.grid.ny, row_bytes<T>(run.grid));
  return rows;
}

}  // namespace

std::vector<cpx> my_rows(const Run& run, const cpx* slice) {
  return rows_of(run, slice);
}
std::vector<double> my_rows(const Run& run, const double* slice) {
  return rows_of(run, slice);
}

GatheringSink::GatheringSink(const Run& run, std::vector<Sink*> sinks)
    : grid_(run.grid), sinks_(std::move(sinks)) {}

// Of all sinks together, known to all ranks.
SliceRequest GatheringSink::request(int k) const {
  SliceRequest all = required_by(sinks_, k, grid_);
  const std::string bytes =
      ranks::from_first(std::string(reinterpret_cast<const char*>(&all), sizeof all));
  std::memcpy(&all, bytes.data(), sizeof all);
  return all;
}

template <typename T>
void GatheringSink::gather(const T* own, const SliceRequest& request, std::vector<T>& whole) const {
  if (ranks::is_first()) whole.resize(grid_.plane());
  const std::size_t first =
      static_cast<std::size_t>(request.first_row) * static_cast<std::size_t>(grid_.nx);
  ranks::gather_lines(own, ranks::is_first() ? whole.data() + first : nullptr, grid_.ny,
                      {request.first_row, request.end_row}, row_bytes<T>(grid_));
}

void GatheringSink::take(int k, const Slice& own) {
  const SliceRequest needed = request(k);
  const double flux = needed.flux ? ranks::sum(own.flux) : 0.0;
  if (needed.E) gather(own.E, needed, E_);
  if (needed.F) gather(own.F, needed, F_);
  if (needed.N) gather(own.N, needed, N_);
  for (Sink* sink : sinks_) sink->take(k, {E_.data(), F_.data(), N_.data(), own.segment, flux});
}

void GatheringSink::finish() {
  for (Sink* sink : sinks_) sink->finish();
}
