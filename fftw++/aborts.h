// FFTW ends the process by abort() when its own memory runs out: a word about what was being done.
#pragma once

namespace fftwpp {

// For as long as it lives, an abort() of the calling thread says that it came while what was being
// done, and ends the process with exit status 1. what must outlive it.
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

// Begins to listen for aborts; once is enough. Aborts that no Doing explains go their way.
void explain_aborts();

}  // namespace fftwpp
