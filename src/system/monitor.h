// Outputs of a configuration: the records of its [monitor] sections.
#pragma once

#include <optional>
#include <string>
#include <vector>

enum class MonitorType { kField, kBeam, kOverlap, kFocus };

// One output. Lengths in the file's unit; x and y from the middle of the domain, z from the entry.
// Values that the file does not give are empty or the default.
struct Monitor {
  MonitorType type = MonitorType::kField;
  std::string file;  // relative to the working directory
  int every = 1;     // interval in slices

  // A box; or one plane of it, the samples nearest to x, y or z. For tables x and y are a centre.
  std::optional<double> x1, x2, y1, y2, z1, z2;
  std::optional<double> x, y, z;

  // type = field
  bool saves_E = true, saves_intensity = false, saves_flux = false, saves_index = false;
  bool is_single = false;  // precision

  // type = beam: power inside a circle of r around x, y. type = overlap: the mode's radius.
  std::optional<double> r;

  // type = overlap
  enum class Mode { kInput, kGaussian, kLp01, kFile } mode = Mode::kInput;
  double waist = 0;             // 1/e radius of the field
  double tiltx = 0, tilty = 0;  // degrees
  double n = 0, ne = 0;         // indices of core and cladding
  std::string mode_file;        // input: relative to the configuration's folder; its keys are
  std::string dataset = "/E";   //   `modefile` and `dataset`
  double dx = 0, dy = 0;        //   its sampling; 0: from the file's attributes

  int line = 0;  // of the opening tag
};
