#include "many1d.h"

#include "aborts.h"

namespace fftwpp {

fft1d_many::fft1d_many(const many_layout& layout_, int sign_, Complex* in, Complex* out)
    : fftw(2U * static_cast<unsigned int>(layout_.n * layout_.howmany), sign_), layout(layout_) {
  Setup(in, out);
}

fftw_plan fft1d_many::Plan(Complex* in, Complex* out) {
  return fftw_plan_many_dft(1, &layout.n, layout.howmany, reinterpret_cast<fftw_complex*>(in),
                            nullptr, layout.in_stride, layout.in_dist,
                            reinterpret_cast<fftw_complex*>(out), nullptr, layout.out_stride,
                            layout.out_dist, sign, effort);
}

fft1f_many::fft1f_many(const many_layout& layout, int sign, Single* in, Single* out) {
  explain_aborts();
  const Doing planning("planning transforms in single precision");
  // Not measured: the wisdom file has double precision only. Plans measured in each run would
  // change the last bits of equal runs. A measured plan is not faster.
  plan = fftwf_plan_many_dft(1, &layout.n, layout.howmany, reinterpret_cast<fftwf_complex*>(in),
                             nullptr, layout.in_stride, layout.in_dist,
                             reinterpret_cast<fftwf_complex*>(out), nullptr, layout.out_stride,
                             layout.out_dist, sign, FFTW_ESTIMATE);
  if (plan == nullptr) noplan();
}

fft1f_many::~fft1f_many() {
  fftwf_destroy_plan(plan);
}

void fft1f_many::fft(Single* in, Single* out) const {
  const Doing transforming("transforming in single precision");
  fftwf_execute_dft(plan, reinterpret_cast<fftwf_complex*>(in),
                    reinterpret_cast<fftwf_complex*>(out));
}

}  // namespace fftwpp
