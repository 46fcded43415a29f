// What a run will write, seen to before it writes anything.
#include <cstdio>

#include "diagnostics.h"
#include "io/io.h"
#include "main/branch.h"
#include "main/hangings.h"
#include "main/identity.h"
#include "main/stages.h"
#include "ranks/ranks.h"
#include "wisdom_state.h"

namespace {

struct Outputs {
  std::vector<std::string> inputs = {"N_sys.csv", "E_inp.csv", "F_inp.csv"};
  std::vector<std::string> results;
  std::vector<std::string> record;

  explicit Outputs(const Run& run) {
    const Options& options = run.options;
    if (options.is_gpu) add_results(Backend::kDevice);
    if (options.is_cpu) add_results(Backend::kCpu);
    if (options.is_store && !options.record.empty() && !results.empty())
      record.push_back(options.record);
  }

  void add_results(Backend backend) {
    const BackendFiles& files = files_of(backend);
    results.insert(results.end(), {files.E, files.F, files.profile});
  }

  [[nodiscard]] std::vector<std::string> all() const {
    std::vector<std::string> names = inputs;
    names.insert(names.end(), results.begin(), results.end());
    names.insert(names.end(), record.begin(), record.end());
    return names;
  }
};

void refuse_what_was_warned_of(const Options& options) {
  const std::vector<std::string>& warnings = diagnostics::warnings();
  if (!options.is_strict || warnings.empty()) return;
  std::string list;
  if (options.is_quiet)  // which did not show them
    for (const std::string& warning : warnings) list += "\nzerith: warning: " + warning;
  diagnostics::fail(std::to_string(warnings.size()) +
                    (warnings.size() == 1 ? " warning" : " warnings") +
                    ", and --strict makes them errors; nothing was written" + list);
}

void warn_of_plane(const Run& run) {
  const Options& options = run.options;
  const Grid& grid = run.grid;
  const int planes = options.p == XZ ? grid.ny : options.p == YZ ? grid.nx : grid.nz;
  if (planes < 1 || options.layer == -1 || (options.layer >= 0 && options.layer < planes)) return;
  diagnostics::warn("-l " + std::to_string(options.layer) + ": there are planes 0 to " +
                    std::to_string(planes - 1) +
                    "; the files hold what stands in that place of the arrays, and 0 beyond them");
}

}  // namespace

std::vector<std::string> outputs_of(const Run& run) {
  std::vector<std::string> names = Outputs(run).all();
  if (run.options.is_cpu || run.options.is_gpu) names.emplace_back("wisdom3.txt");
  if (!run.options.checkpoint.empty()) names.push_back(run.options.checkpoint);
  return names;
}

void look_ahead(Run& run) {
  make_masks_and_monitors(run);
  if (!ranks::is_first()) return;
  warn_of_plane(run);
  for (const std::string& name : Outputs(run).all()) warn_if_unwritable(name);
}

void secure_outputs(Run& run) {
  if (!ranks::is_first()) return;
  const Options& options = run.options;
  std::vector<std::string> names = outputs_of(run);
  if (options.is_cpu || options.is_gpu)
    for (const Monitor& monitor : run.description.monitors) names.push_back(monitor.file);
  refuse_own_input(options.config_file, names);
  refuse_what_was_warned_of(options);
  if (options.checkpoint.empty()) return;
  if (options.is_gpu && options.is_compare)
    diagnostics::fail("--checkpoint cannot hold the two volumes that -c compares; leave out -c");
  run.identity = identity_of(run);
  run.resumed = read_checkpoint(options.checkpoint, run.identity);
  if (!run.resumed) return;
  fftwpp::restore_wisdom(run.resumed->wisdom, run.resumed->wisdom_single);
  diagnostics::note("going on from " + options.checkpoint + ", behind slice " +
                    std::to_string(run.resumed->slice));
}

void finish(const Run& run) {
  if (ranks::is_first() && !run.options.checkpoint.empty())
    std::remove(run.options.checkpoint.c_str());
}

void record_row(const Run& run, double kernel_ms, double cpu_ms, double error) {
  const Options& options = run.options;
  if (!options.is_store || !ranks::is_first()) return;
  options.require_value("r", "store-results");
  const Grid& grid = run.grid;
  // A run without a device does not look at its options.
  const int kernel = options.is_gpu ? options.kernel : DEFAULT_KERNEL;
  const int blockSize = options.is_gpu ? options.blockSize : DEFAULT_BLOCK_SIZE;
  store_results(options.record, options.config_file, kernel, blockSize, grid.nz, grid.ny, grid.nx,
                kernel_ms, cpu_ms, error);
}
