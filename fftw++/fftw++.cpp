#include "fftw++.h"

#include <omp.h>
#include <sys/time.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>

namespace fftwpp {
namespace {

constexpr std::size_t kAlignment = sizeof(Complex);

fftw_complex* raw(Complex* p) {
  return reinterpret_cast<fftw_complex*>(p);
}

int read_character(void* stream) {
  return GetWisdom(*static_cast<std::ifstream*>(stream));
}
void write_character(char c, void* stream) {
  PutWisdom(c, *static_cast<std::ofstream*>(stream));
}

}  // namespace

std::ifstream fftw::ifWisdom;
std::ofstream fftw::ofWisdom;
bool fftw::Wise = false;
const double fftw::twopi = 6.283185307179586;
unsigned int fftw::maxthreads = 1;
double fftw::testseconds = 0.1;
unsigned int fftw::effort = FFTW_MEASURE;
const char* fftw::WisdomName = "wisdom3.txt";

int GetWisdom(std::ifstream& s) {
  return s.get();
}
void PutWisdom(char c, std::ofstream& s) {
  s.put(c);
}

double seconds() {
  static timeval last{};
  timeval now{};
  gettimeofday(&now, nullptr);
  const double elapsed = static_cast<double>(now.tv_sec - last.tv_sec) +
                         static_cast<double>(now.tv_usec - last.tv_usec) / 1000000.0;
  last = now;
  return elapsed;
}

fftw::fftw(unsigned int doubles_, int sign_) : doubles(doubles_), sign(sign_), norm(1.0) {
  const unsigned int elements = doubles / 2;
  norm /= elements;
  static bool initialize = true;
  if (!initialize) return;
  fftw_init_threads();
  initialize = false;
}

fftw::~fftw() {
  if (plan != nullptr) fftw_destroy_plan(plan);
}

void noplan() {
  std::cerr << "zerith: Unable to construct FFTW plan" << std::endl;
  std::exit(1);
}

void fftw::CheckAlign(Complex* p, const char* s) {
  if (reinterpret_cast<std::uintptr_t>(p) % kAlignment == 0) return;
  std::cerr << "zerith: WARNING: " << s << " array is not " << kAlignment
            << "-byte aligned: address " << p << std::endl;
}

void fftw::Setup(Complex* in, Complex* out) {
  if (!Wise) {
    ifWisdom.open(WisdomName);
    fftw_import_wisdom(read_character, &ifWisdom);
    ifWisdom.close();
    Wise = true;
  }
  // Planning by measurement overwrites its arrays: without an input of the caller's it works on one
  // of its own, so no data of theirs is disturbed.
  Complex* scratch = nullptr;
  if (in == nullptr) {
    Array::newAlign(scratch, (doubles + 1) / 2, kAlignment);
    in = scratch;
  }
  CheckAlign(in, "constructor input");
  if (out == nullptr)
    out = in;
  else
    CheckAlign(out, "constructor output");
  inplace = out == in;

  fftw_plan_with_nthreads(1);
  plan = Plan(in, out);
  if (plan == nullptr) noplan();
  threads = 1;
  if (maxthreads > 1) TryThreads(in, out);

  Array::deleteAlign(scratch);
  ofWisdom.open(WisdomName, std::ios::out | std::ios::trunc);
  fftw_export_wisdom(write_character, &ofWisdom);
  ofWisdom.close();
}

// Mean seconds of a transform: over *runs of them, or, for *runs of 0, over as many as fill
// testseconds, whose number and standard deviation are stored.
double fftw::MeanTime(Complex* in, Complex* out, int* runs, double* stdev) {
  const bool is_counted = *runs > 0;
  const int limit = is_counted ? *runs : static_cast<int>(1000000 * testseconds);
  int count = 1;
  double sum = 0.0;
  double sum2 = 0.0;
  seconds();
  while (is_counted || limit > 1) {
    fft(in, out);
    const double t = seconds();
    sum += t;
    sum2 += t * t;
    if (!is_counted && sum > testseconds) break;
    if (is_counted && count == limit) break;
    ++count;
    if (!is_counted && count == limit) break;
  }
  *runs = count;
  *stdev = count == 1 ? 0.0 : std::sqrt(std::max(0.0, (sum2 - sum * sum / count) / (count - 1)));
  return sum / count;
}

// Keeps a plan of more threads only if it beats the one-thread plan by more than the noise.
void fftw::TryThreads(Complex* in, Complex* out) {
  int runs = 0;
  double stdev = 0.0;
  const double mean = MeanTime(in, out, &runs, &stdev);

  maxthreads = std::min(maxthreads, static_cast<unsigned int>(omp_get_max_threads()));
  fftw_plan_with_nthreads(static_cast<int>(maxthreads));
  fftw_plan const single = plan;
  plan = Plan(in, out);
  if (plan == nullptr) noplan();

  double ignored = 0.0;
  if (MeanTime(in, out, &runs, &ignored) > mean - stdev) {
    fftw_destroy_plan(plan);
    plan = single;
  } else {
    fftw_destroy_plan(single);
    threads = maxthreads;
  }
}

Complex* fftw::Setout(Complex* in, Complex* out) {
  CheckAlign(in, "input");
  if (out == nullptr)
    out = in;
  else
    CheckAlign(out, "output");
  if (inplace != (out == in)) {
    std::cerr
        << "zerith: ERROR: fft constructor and call must be both in place or both out of place"
        << std::endl;
    std::exit(1);
  }
  return out;
}

void fftw::fft(Complex* in, Complex* out) {
  out = Setout(in, out);
  Execute(in, out, false);
}

void fftw::fftNormalized(Complex* in, Complex* out) {
  out = Setout(in, out);
  Execute(in, out, false);
  for (unsigned int i = 0; i < (doubles + 1) / 2; ++i) out[i] *= norm;
}

void fftw::Execute(Complex* in, Complex* out, bool /*shift*/) {
  fftw_execute_dft(plan, raw(in), raw(out));
}

fft2d::fft2d(unsigned int nx_, unsigned int ny_, int sign_, Complex* in, Complex* out)
    : fftw(2 * nx_ * ny_, sign_), nx(nx_), ny(ny_) {
  Setup(in, out);
}

fftw_plan fft2d::Plan(Complex* in, Complex* out) {
  return fftw_plan_dft_2d(static_cast<int>(nx), static_cast<int>(ny), raw(in), raw(out), sign,
                          effort);
}

void fft2d::Execute(Complex* in, Complex* out, bool /*shift*/) {
  fftw_execute_dft(plan, raw(in), raw(out));
}

}  // namespace fftwpp
