// What a run watches of a slice, worked out where the slice is, so that the slice can stay there.
#pragma once

#include "kernel/pair_planes.h"

namespace device {

// On the device: the sum of F, and the numbers of the last steps behind which a sample of E was not
// finite, and was not zero.
struct SliceReport {
  double flux;
  int not_finite, light;
};

class SliceReporter {
 public:
  SliceReporter(const Plane& plane, Status& status);

  // Launches what the survey asks for, of E and F [ny][nx] on the device behind a step of that
  // number.
  void look_over(const Survey& survey, const double2* E, const double* F, int step);
  // What the last look, behind that step, has found.
  [[nodiscard]] Findings findings(int step);

 private:
  const Plane plane_;
  Status& status_;
  Array<SliceReport> report_;
  Array<double> sums_[2];
};

}  // namespace device
