#include <algorithm>
#include <cmath>

#include "log.h"
#include "system/grid.h"
#include "wpm/wpm.h"

void init(struct_sysOptions* so) {
  so->f = metres_per_unit(so->scl);
}

void init_X(double* X, int nx, double dx) {
  const double centre = std::floor(nx >> 1);
  for (int i = 0; i < nx; ++i) X[i] = (i - centre) * dx;
}

void init_F(cpx* F, int n, double df) {
  const int half = n / 2;
  for (int i = 0; i < half; ++i) F[i] = cpx(i * df, 0.0);
  for (int i = -half; i < 0; ++i) F[half + (i + half)] = cpx(i * df, 0.0);
}

void init_0(double* F, const struct_sysOptions* so, bool is_quiet) {
  std::fill_n(F, Grid(*so).voxels(), 0.0);  // none if a size is negative
  Log(is_quiet) << "memory initialized zero" << std::endl;
}
