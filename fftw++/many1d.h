// One-dimensional transforms, several at a time, for passes over the rows and columns of a plane.
#pragma once

#include "fftw++.h"

namespace fftwpp {

// howmany transforms of n samples each. Sample s of transform t stands at s*stride + t*dist, on
// either side with its own strides. Executing is safe from several threads at once.
struct many_layout {
  int n;
  int howmany;
  int in_stride, in_dist;
  int out_stride, out_dist;
};

// Double precision, planned and kept in wisdom like every fftw; in and out are overwritten by
// planning.
class fft1d_many : public fftw {
 public:
  fft1d_many(const many_layout& layout, int sign, Complex* in, Complex* out);

 protected:
  fftw_plan Plan(Complex* in, Complex* out) override;

 private:
  many_layout layout;
};

// Single precision, for what needs no more. Its plan is FFTW's estimate, which depends on the
// layout alone: as fast here as a measured one, and the same each time.
class fft1f_many {
 public:
  using Single = std::complex<float>;

  fft1f_many(const many_layout& layout, int sign, Single* in, Single* out);
  ~fft1f_many();
  fft1f_many(const fft1f_many&) = delete;
  fft1f_many& operator=(const fft1f_many&) = delete;

  // The arrays must be aligned like those of the construction, to 16 bytes.
  void fft(Single* in, Single* out) const;

 private:
  fftwf_plan plan = nullptr;
};

}  // namespace fftwpp
