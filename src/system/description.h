// The content of a configuration file, and how it is read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "system/monitor.h"
#include "system/system.h"

// A key from the file or an override. A repeated key is stored each time.
struct GivenKey {
  std::string_view name;
  std::string value;
  int line = 0;           // 0: an override
  std::string refused{};  // what the value must be; empty if it was accepted
};
using GivenKeys = std::vector<GivenKey>;

// Whether the key was given, and its last line; 0 if it was not given.
bool is_given(const GivenKeys& keys, std::string_view name);
int line_of(const GivenKeys& keys, std::string_view name);

// The vacuum wavelength of a run: the first of its waves that is not 0, times the metres per file
// unit. 0 if there is none.
double vacuum_wavelength(const std::vector<struct_emfield>& waves, double metres);

struct Description {
  struct_sysOptions so;
  std::vector<struct_layer> layers;
  std::vector<struct_emfield> waves;
  std::vector<Monitor> monitors;

  // The given keys, for messages; indexed as the records.
  GivenKeys global_keys;
  std::vector<GivenKeys> layer_keys, wave_keys, monitor_keys;

  // True if a layer's indices are derived from its permittivities, false for the reverse.
  std::vector<bool> by_permittivity;
};

// Reads the file into d, which must be empty, then applies the overrides, such as "layer3.r=5000".
// Unless is_quiet, echoes each line of the file, then any overrides, to the log. Ignores unknown
// input in [global], [wave] and [layer] with a warning. Throws Error on
// - a file that cannot be read, a line that is too long or has only equals signs,
// - any mistake in [monitor] or in an override,
// - a value out of range, if the kind of layer or wave uses the key, and
//   combinations of such keys without sense.
void read_description(const std::string& filename, const std::vector<std::string>& overrides,
                      Description& d, bool is_quiet);
