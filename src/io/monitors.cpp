// From the [monitor] sections to their sinks.
#include "io/monitors.h"

#include <filesystem>

#include "data/dataset.h"
#include "diagnostics.h"
#include "io/output_file.h"

namespace {

// One spelling for each file, whatever way leads to it.
std::string spelling(const std::string& name) {
  std::error_code none;
  const std::filesystem::path path = std::filesystem::absolute(
      std::filesystem::path(folder_of(name)) / std::filesystem::path(name).filename(), none);
  return std::filesystem::weakly_canonical(path, none).string();
}

void require_file(const Monitor& monitor, std::vector<std::string>& taken,
                  const std::string& where) {
  if (const std::string reason = why_unwritable(monitor.file); !reason.empty())
    diagnostics::fail(where + ": the file " + monitor.file + " cannot be written: " + reason);
  const std::string name = spelling(monitor.file);
  for (const std::string& other : taken)
    if (other == name)
      diagnostics::fail(where + ": the file " + monitor.file +
                        " is another output of this run; give each a name of its own");
  taken.push_back(name);
}

}  // namespace

std::vector<std::unique_ptr<Sink>> make_monitors(const std::vector<Monitor>& monitors,
                                                 const Grid& grid, const RunContext& run) {
  std::vector<std::string> taken;
  for (const std::string& output : run.outputs) taken.push_back(spelling(output));
  std::vector<std::unique_ptr<Sink>> sinks;
  for (const Monitor& monitor : monitors) {
    const std::string where = data::place(run.configuration, monitor.line);
    require_file(monitor, taken, where);
    switch (monitor.type) {
      case MonitorType::kField:
        sinks.push_back(make_field_sink(monitor, grid, run, where));
        break;
      case MonitorType::kBeam:
        sinks.push_back(make_beam_sink(monitor, grid, run, where));
        break;
      case MonitorType::kOverlap:
        sinks.push_back(make_overlap_sink(monitor, grid, run, where));
        break;
      case MonitorType::kFocus:
        sinks.push_back(make_focus_sink(monitor, grid, run, where));
        break;
    }
  }
  return sinks;
}
