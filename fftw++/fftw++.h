// A plan object over FFTW 3: alignment checks, persistent wisdom, fixed planning effort.
//
//   fftwpp::fft2d forward(nx, ny, -1, nullptr, S);   // plans on scratch memory, leaves S undefined
//   forward.fft(slice, S);                           // S = unnormalised transform of slice
//
// Extents are slowest first: nx rows of ny samples. Planning and the static members are not
// protected against use from several threads.
#pragma once

#include <fftw3.h>

#include <fstream>

#include "Array.h"

namespace fftwpp {

// Character callbacks of FFTW's wisdom import and export.
int GetWisdom(std::ifstream& s);
void PutWisdom(char c, std::ofstream& s);

// Seconds of wall clock since the last call.
double seconds();

// A plan could not be made: throws Error of status 1.
[[noreturn]] void noplan();

class fftw {
 public:
  fftw(const fftw&) = delete;
  fftw& operator=(const fftw&) = delete;
  virtual ~fftw();

  // out = transform of in, unnormalised. A null out means in place. Warns unless arrays are aligned
  // to 16 bytes, like those of the constructor.
  void fft(Complex* in, Complex* out);

  // As fft, then every element of out is divided by the number of elements.
  virtual void fftNormalized(Complex* in, Complex* out);

  static std::ifstream ifWisdom;
  static std::ofstream ofWisdom;
  static bool Wise;  // this process has read the wisdom
  static const double twopi;
  static unsigned int maxthreads;  // above 1, planning tries this many threads
  static double testseconds;       // time limit of such a trial
  static unsigned int effort;      // FFTW_MEASURE
  static const char* WisdomName;   // relative to the working directory

  friend std::string wisdom_text();  // wisdom_state.h

 protected:
  // doubles: number of doubles in the data set. sign: of the exponent, -1 or +1.
  fftw(unsigned int doubles, int sign);

  virtual fftw_plan Plan(Complex* in, Complex* out) = 0;
  virtual void Execute(Complex* in, Complex* out, bool shift);

  // Plans for arrays like in and out; either may be null. Reads wisdom once per process and writes
  // it after every call. Ignores a damaged wisdom file, a pipe and a device. Throws Error of status
  // 1 if no plan can be made.
  void Setup(Complex* in, Complex* out);

  Complex* Setout(Complex* in, Complex* out);
  static void CheckAlign(Complex* p, const char* s);

  unsigned int doubles;
  int sign;
  double norm;
  fftw_plan plan = nullptr;
  bool inplace = false;
  unsigned int threads = 1;

 private:
  void TryThreads(Complex* in, Complex* out);
  static void ReadWisdom();
  static void WriteWisdom();
};

// The two-dimensional complex transform of nx rows of ny samples.
class fft2d : public fftw {
 public:
  fft2d(unsigned int nx, unsigned int ny, int sign, Complex* in, Complex* out);

 protected:
  fftw_plan Plan(Complex* in, Complex* out) override;
  void Execute(Complex* in, Complex* out, bool shift) override;

 private:
  unsigned int nx;
  unsigned int ny;
};

}  // namespace fftwpp
