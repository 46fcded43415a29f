#include "main/streaming.h"

#include <algorithm>

#include "io/io.h"

namespace {

std::string obstacle(const Run& run) {
  const Options& options = run.options;
  const Grid& grid = run.grid;
  if (grid.nx < 1 || grid.ny < 1 || grid.nz < 1) return "a size of the grid is 0";
  if (!grid.is_square()) return "nx and ny differ";
  if (!can_stream(options.p, options.layer, grid)) return "-l -1 asks for all planes along x or y";
  if (options.is_gpu && options.is_compare) return "-c compares whole volumes";
  if (options.is_gpu && !device_can_step(options)) return "-k or -b names no kernel that can run";
  return "";
}

bool has_masks(const Run& run) {
  return run.description.so.edge > 0 || !run.stack->screens().empty();
}

}  // namespace

bool device_can_step(const Options& options) {
  return (options.kernel == 0 || options.kernel == 1) && options.blockSize >= 1 &&
         options.blockSize <= 32;
}

bool can_be_streamed(const Run& run) {
  return (run.options.is_fast || run.options.is_stream) && obstacle(run).empty();
}

std::string why_not_streamed(const Run& run) {
  if (!run.options.is_fast && !run.options.is_stream) return "";
  const std::string why = obstacle(run);
  return why.empty() ? "" : "; " + why;
}

bool needs_march(const Run& run) {
  const Description& d = run.description;
  return run.is_streamed || run.options.is_fast || run.options.is_stream ||
         !run.options.checkpoint.empty() || !d.monitors.empty() || !d.so.trim || has_masks(run);
}
