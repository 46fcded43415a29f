// The keys of [monitor].
#include <algorithm>

#include "system/keys.h"
#include "system/stores.h"

namespace {

using namespace stores;

constexpr Words<MonitorType, 4> kTypes = {
    {"field", "beam", "overlap", "focus"},
    {MonitorType::kField, MonitorType::kBeam, MonitorType::kOverlap, MonitorType::kFocus}};
constexpr Words<Monitor::Mode, 4> kModes = {
    {"input", "gaussian", "lp01", "file"},
    {Monitor::Mode::kInput, Monitor::Mode::kGaussian, Monitor::Mode::kLp01, Monitor::Mode::kFile}};
constexpr Words<bool, 2> kPrecisions = {{"single", "double"}, {true, false}};
constexpr Range kEvery = {1, 2147483647, false, "a whole number of 1 or more"};

// A comma list of the fields to save; others are not saved.
Reading save(Monitor& monitor, const std::string& value) {
  constexpr Words<bool Monitor::*, 4> kFields = {
      {"E", "intensity", "flux", "index"},
      {&Monitor::saves_E, &Monitor::saves_intensity, &Monitor::saves_flux, &Monitor::saves_index}};
  Monitor chosen = monitor;
  for (bool Monitor::*field : kFields.meaning) chosen.*field = false;
  for (std::size_t begin = 0; begin <= value.size();) {
    const std::size_t end = std::min(value.find(',', begin), value.size());
    const std::string_view item = std::string_view(value).substr(begin, end - begin);
    const auto* const found = std::find(kFields.text.begin(), kFields.text.end(), item);
    if (found == kFields.text.end())
      return {Reading::kRefused, "must be a comma list of E, intensity, flux and index"};
    chosen.*kFields.meaning[static_cast<std::size_t>(found - kFields.text.begin())] = true;
    begin = end + 1;
  }
  monitor = chosen;
  return {};
}

constexpr Key<Monitor> kMonitorKeys[] = {
    {"type", word<&Monitor::type, kTypes>, kTypes.text},
    {"file", name<&Monitor::file>},
    {"save", save},
    {"every", strict_whole<&Monitor::every, kEvery>},
    {"x", optional_real<&Monitor::x, kAny>},
    {"y", optional_real<&Monitor::y, kAny>},
    {"z", optional_real<&Monitor::z, kAny>},
    {"x1", optional_real<&Monitor::x1, kAny>},
    {"x2", optional_real<&Monitor::x2, kAny>},
    {"y1", optional_real<&Monitor::y1, kAny>},
    {"y2", optional_real<&Monitor::y2, kAny>},
    {"z1", optional_real<&Monitor::z1, kAny>},
    {"z2", optional_real<&Monitor::z2, kAny>},
    {"precision", word<&Monitor::is_single, kPrecisions>, kPrecisions.text},
    {"r", optional_real<&Monitor::r, kPositive>},
    {"mode", word<&Monitor::mode, kModes>, kModes.text},
    {"waist", strict_real<&Monitor::waist, kPositive>},
    {"tiltx", strict_real<&Monitor::tiltx, kAngle>},
    {"tilty", strict_real<&Monitor::tilty, kAngle>},
    {"n", strict_real<&Monitor::n, kPositive>},
    {"ne", strict_real<&Monitor::ne, kPositive>},
    {"modefile", name<&Monitor::mode_file>},
    {"dataset", name<&Monitor::dataset>},
    {"dx", strict_real<&Monitor::dx, kPositive>},
    {"dy", strict_real<&Monitor::dy, kPositive>},
};

}  // namespace

std::span<const Key<Monitor>> monitor_keys() {
  return kMonitorKeys;
}
