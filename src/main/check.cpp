// --check: the whole set-up, a report, and nothing written.
#include <cmath>
#include <iostream>

#include "diagnostics.h"
#include "joined.h"
#include "main/memory.h"
#include "main/stages.h"
#include "main/streaming.h"
#include "ranks/ranks.h"
#include "wpm/progress.h"
#include "wpm/survey.h"

namespace {

void line(const std::string& name, const std::string& text) {
  std::cout << name << std::string(name.size() < 13 ? 13 - name.size() : 1, ' ') << text
            << std::endl;
}

std::string bytes_in_words(double bytes) {
  return bytes < 1e9 ? joined(std::max(0.1, std::round(bytes * 1e-5) / 10), " MB")
                     : joined(std::round(bytes * 1e-8) / 10, " GB");
}

const char* name_of(component kind) {
  constexpr const char* kNames[] = {"homog", "grating", "waveguide", "taper",
                                    "lens",  "asphere", "splitter",  "mzehnder",
                                    "grin",  "screen",  "file"};
  return kNames[kind];
}

void report_grid(const Run& run) {
  const Grid& g = run.grid;
  const struct_sysOptions& so = run.description.so;
  line("grid", joined(g.nx, " x ", g.ny, " x ", g.nz, " samples, ", so.x, " x ", so.y, " x ", so.z,
                      " units of ", g.metres, " m"));
  line("spacing", joined(g.dx, " x ", g.dy, " x ", g.dz, " m"));
  line("wavelength", joined(run.lambda, " m, ", run.lambda / g.dx, " samples in x, ",
                            run.lambda / g.dy, " in y, ", run.lambda / g.dz, " in z"));
}

void report_memory(const Run& run, const IndexSurvey& found) {
  std::string text = bytes_in_words(peak_bytes(run, found));
  if (ranks::count() > 1) text += joined(" at the first of ", ranks::count(), " processes");
  text += run.is_streamed ? ", as slices" : ", as whole volumes" + why_not_streamed(run);
  line("memory", text);
}

void report_components(const Run& run) {
  const Description& d = run.description;
  const std::vector<LayerPlace>& places = run.stack->places();
  for (std::size_t i = 0; i < places.size(); ++i) {
    const Slab& slab = places[i].slab;
    std::string where = slab.taken > 0
                            ? joined(", slices ", slab.start, " to ", slab.start + slab.taken - 1)
                            : ", no slice";
    if (d.layers[i].t == SCREEN) where = joined(", on slice ", slab.start);
    line(joined("layer ", i + 1), name_of(d.layers[i].t) + where);
  }
}

// Which sum the steps of a fast run take.
std::string sum_in_words(const Run& run, const IndexSurvey& found) {
  const auto transformed = static_cast<int>(found.transformed_steps);
  const int direct = std::max(0, run.grid.nz - 1) - transformed;
  const bool is_on_device = run.options.is_gpu && !run.options.is_cpu;  // it does not choose
  if (!run.options.is_fast || (transformed == 0 && !is_on_device)) return "direct sum";
  if (direct == 0 || is_on_device) return "transforms";
  return joined("transforms in ", transformed, " steps, direct sum in ", direct);
}

void report_work(const Run& run, const IndexSurvey& found) {
  const Options& options = run.options;
  const int threads = threads_of(options) * ranks::count();
  line("index", joined(found.changes, " steps change it; ", found.mean_pairs,
                       " pairs of indices a step, ", found.most_pairs, " at most"));
  const double direct = found.direct_seconds / threads;
  const double fast = found.fast_seconds / threads;
  const std::string on = joined(" on ", threads, threads == 1 ? " thread" : " threads");
  if (options.is_cpu || options.is_gpu) {
    line("sum", sum_in_words(run, found));
    line("time", "about " + duration_in_words(options.is_fast ? fast : direct) + on +
                     (options.is_fast || direct <= fast
                          ? ""
                          : "; with --fast about " + duration_in_words(fast)));
  } else {
    line("time", "nothing is propagated; with -p about " + duration_in_words(direct) +
                     ", with -p --fast about " + duration_in_words(fast) + on);
  }
}

}  // namespace

int report_check(const Run& run) {
  if (!ranks::is_first()) return 0;
  line("file", run.options.config_file);
  report_grid(run);
  const IndexSurvey found =
      survey(*run.stack, static_cast<double>(count_plane_waves(run.E.data(), run.grid)));
  report_memory(run, found);
  report_components(run);
  report_work(run, found);
  const std::vector<std::string>& warnings = diagnostics::warnings();
  line("warnings", warnings.empty() ? "none" : std::to_string(warnings.size()));
  for (const std::string& warning : warnings) std::cout << "  " << warning << std::endl;
  return warnings.empty() ? 0 : 255;
}
