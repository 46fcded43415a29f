// One-dimensional transforms, several at a time, for passes over the rows and columns of a plane.
#pragma once

#include "fftw++.h"

namespace fftwpp {

// howmany transforms of n samples each. Sample s of transform t is at s*stride + t*dist; each side
// has its own strides. Execution is safe from several threads at once.
struct many_layout {
  int n;
  int howmany;
  int in_stride, in_dist;
  int out_stride, out_dist;
};

// Double precision, planned and stored in wisdom like every fftw. Planning overwrites in and out.
class fft1d_many : public fftw {
 public:
  fft1d_many(const many_layout& layout, int sign, Complex* in, Complex* out);

 protected:
  fftw_plan Plan(Complex* in, Complex* out) override;

 private:
  many_layout layout;
};

// Single precision. Its plan is FFTW's estimate, which depends on the layout alone. It is as fast
// as a measured one here, and the same each time.
class fft1f_many {
 public:
  using Single = std::complex<float>;

  fft1f_many(const many_layout& layout, int sign, Single* in, Single* out);
  ~fft1f_many();
  fft1f_many(const fft1f_many&) = delete;
  fft1f_many& operator=(const fft1f_many&) = delete;

  // The arrays must be aligned to 16 bytes, like those of the constructor.
  void fft(Single* in, Single* out) const;

 private:
  fftwf_plan plan = nullptr;
};

}  // namespace fftwpp
