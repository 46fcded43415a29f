#include "main/sweep_subject.h"

#include "system/overrides.h"

namespace sweep {

Subject::Subject(const Plan& plan) : axes_(plan.axes) {
  read_description(plan.configuration, plan.overrides, description_, true);
  for (const Axis& axis : axes_)
    sections_.push_back(
        section_index(KeyName(axis.key), description_, "--sweep " + axis.key + ": "));
}

std::vector<std::string> Subject::tables(const std::vector<std::string>& values) const {
  std::vector<std::string> files;
  for (std::size_t m = 0; m < description_.monitors.size(); ++m) {
    const Monitor& monitor = description_.monitors[m];
    if (monitor.type == MonitorType::kField) continue;
    std::string file = monitor.file;
    for (std::size_t a = 0; a < axes_.size(); ++a) {
      const KeyName name(axes_[a].key);
      if (name.section == "monitor" && name.key == "file" && sections_[a] == m) file = values[a];
    }
    files.push_back(file);
  }
  return files;
}

}  // namespace sweep
