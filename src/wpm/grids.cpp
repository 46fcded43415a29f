#include <algorithm>
#include <cmath>

#include "log.h"
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
  const std::size_t count = static_cast<std::size_t>(so->nz) * static_cast<std::size_t>(so->ny) *
                            static_cast<std::size_t>(so->nx);
  std::fill_n(F, count, 0.0);
  Log(is_quiet) << "memory initialized zero" << std::endl;
}
