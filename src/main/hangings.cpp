#include "main/hangings.h"

#include <fstream>
#include <sstream>

#include "data/dataset.h"
#include "diagnostics.h"
#include "main/stages.h"
#include "ranks/ranks.h"
#include "wpm/byte_stream.h"
#include "wpm/sampled_field.h"

namespace {

std::string text_of_file(const std::string& name) {
  std::ostringstream text;
  text << std::ifstream(name).rdbuf();
  return text.str();
}

// The field of a mode's file on the samples of the grid.
std::vector<cpx> read_mode(const struct_sysOptions& so, const Monitor& monitor, const Grid& grid) {
  const SampledField field({so.sysname, monitor.mode_file, monitor.dataset, monitor.dx * so.f,
                            monitor.dy * so.f, 0.0, monitor.line},
                           grid);
  return field.on(grid, 0, 0);
}

RunContext context_of(const Run& run) {
  const struct_sysOptions& so = run.description.so;
  RunContext context;
  context.configuration = run.options.config_file;
  context.text = text_of_file(run.options.config_file);
  context.options = run.options.text;
  context.version = VERSION;
  context.lambda = run.lambda;
  context.k0 = run.k0;
  context.outputs = outputs_of(run);
  context.light_taken = [&run] { return run.edge != nullptr ? run.edge->taken() : 0.0; };
  context.read_mode = [&so](const Monitor& monitor, const Grid& grid) {
    return read_mode(so, monitor, grid);
  };
  return context;
}

}  // namespace

void make_masks_and_monitors(Run& run) {
  const Description& d = run.description;
  if (!run.stack->screens().empty())
    run.screens =
        std::make_unique<ScreenMask>(run.grid, run.window, run.stack->screens(), d.so.sysname);
  if (d.so.edge > 0)
    run.edge = std::make_unique<EdgeMask>(run.grid, run.window, d.so.edge * d.so.f,
                                          run.lambda / run.entry_index);
  if (d.monitors.empty() || !ranks::is_first()) return;
  run.monitors = make_monitors(d.monitors, run.grid, context_of(run));
  if (!run.options.is_cpu && !run.options.is_gpu)
    diagnostics::warn(run.place("monitors record what is propagated; add -p or -g"));
  else if (run.options.is_cpu && run.options.is_gpu)
    diagnostics::note("monitors record the field of the CPU");
}

// Screens before the edge, which takes from what they leave.
RunOutputs::RunOutputs(Run& run, Backend backend) {
  if (run.is_streamed && ranks::is_first()) add_files(run, backend);
  for (const std::unique_ptr<Sink>& file : files_) sinks_.push_back(file.get());
  if (backend == Backend::kCpu || !run.options.is_cpu)
    for (const std::unique_ptr<Sink>& monitor : run.monitors) sinks_.push_back(monitor.get());
  if (run.screens != nullptr) masks_.push_back(run.screens.get());
  if (run.edge == nullptr) return;
  run.edge->set_taken(0.0);
  masks_.push_back(run.edge.get());
}

void RunOutputs::add_files(const Run& run, Backend backend) {
  const BackendFiles& names = files_of(backend);
  const Options& o = run.options;
  files_.push_back(make_cross_section_sink(names.E, Quantity::kField, o.p, o.layer, run.grid));
  files_.push_back(make_cross_section_sink(names.F, Quantity::kFlux, o.p, o.layer, run.grid));
  auto profile = make_flux_profile_sink(names.profile);
  profile_ = profile.get();
  files_.push_back(std::move(profile));
}

double RunOutputs::flux_of_first() const {
  return profile_ != nullptr ? profile_->flux0() : 0.0;
}

void RunOutputs::restore(Run& run, const RunState& state) {
  if (state.sinks.size() != sinks_.size())
    diagnostics::fail("the checkpoint is of a run with other outputs; remove it to begin anew");
  try {
    for (std::size_t i = 0; i < sinks_.size(); ++i) sinks_[i]->restore(state.sinks[i]);
  } catch (const TooFewBytes& error) {
    diagnostics::fail(std::string(error.what()) + "; remove it to begin anew");
  }
  if (run.edge != nullptr) run.edge->set_taken(state.taken_by_edge);
}
