// All that a configuration file describes, and how it is read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "system/monitor.h"
#include "system/system.h"

// A key that the file or an override gave, as often as it was given.
struct GivenKey {
  std::string_view name;
  std::string value;
  int line = 0;           // 0: an override
  std::string refused{};  // what the value must be; empty if it was taken
};
using GivenKeys = std::vector<GivenKey>;

// Whether the key was given, and its line, the last if several; 0 if it was not.
bool is_given(const GivenKeys& keys, std::string_view name);
int line_of(const GivenKeys& keys, std::string_view name);

// The wavelength of a run in vacuum: the first of its waves' that is not 0, times metres, the
// metres per file unit. 0 if there is none.
double vacuum_wavelength(const std::vector<struct_emfield>& waves, double metres);

struct Description {
  struct_sysOptions so;
  std::vector<struct_layer> layers;
  std::vector<struct_emfield> waves;
  std::vector<Monitor> monitors;

  // What was given, for messages; place by place as the records.
  GivenKeys global_keys;
  std::vector<GivenKeys> layer_keys, wave_keys, monitor_keys;

  // For each layer, whether its indices are derived from its permittivities, or the other way.
  std::vector<bool> by_permittivity;
};

// Reads the file into d, which must be empty, and puts the overrides over it, each a text such as
// "layer3.r=5000". Unless is_quiet, echoes each line of the file and behind them the overrides, if
// there are any, to the log. What is not understood in [global], [wave] and [layer] is ignored with
// a warning; throws Error on
// - a file that cannot be read, a line that is too long or has nothing but equals signs,
// - whatever is wrong in [monitor] or in an override,
// - a value out of range of a key that has a range, if the kind of layer or wave uses the key, and
//   combinations without sense of such keys.
void read_description(const std::string& filename, const std::vector<std::string>& overrides,
                      Description& d, bool is_quiet);
