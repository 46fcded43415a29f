// What a run watches of a slice, worked out where the slice is, so that the slice can stay there.
#pragma once

#include "kernel/pair_planes.h"

namespace device {

// On the device: the sum of F, and the numbers of the last steps behind which a sample of E was not
// finite, and was not zero; and what the edge has taken.
struct SliceReport {
  double flux, taken;
  int not_finite, light;
};

class SliceReporter {
 public:
  SliceReporter(const Plane& plane, Status& status);

  void set_edge(const double* of_columns, const double* of_rows);  // [nx], [ny]
  // Launches what the survey asks for, of E and F [ny][nx] on the device behind a step of that
  // number.
  void look_over(const Survey& survey, double2* E, const double* F, int step);
  // What the last look, behind that step, has found.
  [[nodiscard]] Findings findings(int step);

 private:
  void add_up(double* to, const double* terms, int count);

  const Plane plane_;
  Status& status_;
  Array<SliceReport> report_;
  Array<double> sums_[2];
  Array<double> edge_x_, edge_y_;
};

}  // namespace device
