// Measures whether more threads are faster.
#include <omp.h>
#include <sys/time.h>

#include <algorithm>
#include <cmath>

#include "fftw++.h"

namespace fftwpp {

unsigned int fftw::maxthreads = 1;
double fftw::testseconds = 0.1;

double seconds() {
  static timeval last{};
  timeval now{};
  gettimeofday(&now, nullptr);
  const double elapsed = static_cast<double>(now.tv_sec - last.tv_sec) +
                         static_cast<double>(now.tv_usec - last.tv_usec) / 1000000.0;
  last = now;
  return elapsed;
}

// Keeps a plan of more threads only if it is faster by more than the noise.
void fftw::TryThreads(Complex* in, Complex* out) {
  const auto ntest = static_cast<unsigned int>(std::max(0.0, 1000000 * testseconds));
  unsigned int N = 1;
  double sum = 0.0;
  double sum2 = 0.0;
  seconds();
  while (ntest > 1) {
    fft(in, out);
    const double t = seconds();
    sum += t;
    sum2 += t * t;
    if (sum > testseconds) break;
    ++N;
    if (N == ntest) break;
  }
  const double mean = sum / N;
  const double stdev = N == 1 ? 0.0 : std::sqrt((sum2 - sum * sum / N) / (N - 1));

  maxthreads = std::min(maxthreads, static_cast<unsigned int>(omp_get_max_threads()));
  fftw_plan_with_nthreads(static_cast<int>(maxthreads));
  fftw_plan const single = plan;
  plan = Plan(in, out);
  if (plan == nullptr) noplan();

  sum = 0.0;
  seconds();
  for (unsigned int run = 0; run < N; ++run) {
    fft(in, out);
    sum += seconds();
  }
  if (sum / N > mean - stdev) {
    fftw_destroy_plan(plan);
    plan = single;
    threads = 1;
  } else {
    fftw_destroy_plan(single);
    threads = maxthreads;
  }
}

}  // namespace fftwpp
