// A complex field of one plane that stands in a file, looked up at any place: a wave, a mask, a
// mode.
#pragma once

#include <string>
#include <vector>

#include "system/grid.h"

// Which plane of which file, as a configuration names it.
struct FieldSource {
  std::string configuration;  // its path: the file's name is relative to its folder
  std::string file, dataset;
  double dx = 0, dy = 0;  // spacing of its samples, m; 0: from the file's attributes
  double z = 0;           // of several slices the one nearest to z, m from the entry of the domain
  int line = 0;           // of the configuration, for messages
};

class SampledField {
 public:
  // Reads the plane. Its samples are centred, sample n/2 at 0, where their spacing is given here,
  // and lie where the file's attributes say otherwise. A file without either must have the samples
  // of the grid. Ends the process with the line of the configuration if the file does not serve.
  SampledField(const FieldSource& source, const Grid& grid);

  // At x, y in metres from the middle of the domain: the file's own number at its samples, to the
  // last bit; bicubic between them (R. G. Keys, IEEE Trans. ASSP 29, 1153, 1981); outside
  // elsewhere.
  [[nodiscard]] cpx operator()(double x, double y, const cpx& outside = 0.0) const;

  // On the samples of a grid, [ny][nx], moved to a middle at x, y in metres.
  [[nodiscard]] std::vector<cpx> on(const Grid& grid, double x, double y,
                                    const cpx& outside = 0.0) const;

 private:
  struct Axis {
    int n = 0;
    double spacing = 0, origin = 0;  // m
    bool is_centred = true;          // origin is then -(n/2) spacing
    // In samples; on a sample exactly, if next to one.
    [[nodiscard]] double position(double x) const;
  };
  [[nodiscard]] cpx along_row(int row, double u) const;

  Axis x_, y_;
  std::vector<cpx> values_;  // [ny][nx]
};
