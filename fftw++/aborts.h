// Reports the operation during which FFTW runs out of memory and calls abort().
#pragma once

namespace fftwpp {

// While it lives, an abort() of the calling thread prints what and ends the process with exit
// status 1. what must outlive it.
class Doing {
 public:
  explicit Doing(const char* what) noexcept : before_(now) { now = what; }
  ~Doing() { now = before_; }
  Doing(const Doing&) = delete;
  Doing& operator=(const Doing&) = delete;

 private:
  friend void explain_aborts();
  static thread_local const char* now;
  const char* before_;
};

// Installs the handler of aborts; once is enough. Aborts outside any Doing are passed on.
void explain_aborts();

}  // namespace fftwpp
