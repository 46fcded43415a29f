#include <climits>
#include <cmath>

#include "io/io.h"

double compare(const cufftDoubleComplex* gpu, const cpx* cpu, int nz, int ny, int nx) {
  double max_err = 0.0;
  const std::size_t row = static_cast<std::size_t>(nx);
  for (int i = 0; i < nz; ++i)
    for (int j = 0; j < ny; ++j)
      for (int k = 0; k < nx; ++k) {
        const std::size_t element = (static_cast<std::size_t>(i) * static_cast<std::size_t>(ny) +
                                     static_cast<std::size_t>(j)) *
                                        row +
                                    static_cast<std::size_t>(k);
        const cpx difference(gpu[element].x - cpu[element].real(),
                             gpu[element].y - cpu[element].imag());
        const double err = std::abs(difference / cpu[element]);
        if (err > max_err) max_err = err;
      }
  return max_err;
}

int nextpow2(double x) {
  int result = 1;
  while (x > result && result <= INT_MAX / 2) result += result;  // 2^30 is the last that fits
  return result;
}
