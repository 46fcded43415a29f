// Timing side by side: machines are noisy and drift, so what is compared runs in turn, and the
// median of the ratios is what counts.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "support/scene.h"

namespace bench {

using Work = std::function<void()>;

// Seconds of one call.
double seconds(const Work& work);

// The median of runs calls.
double median_seconds(const Work& work, int runs);

struct Pair {
  double a, b;   // median seconds of each
  double ratio;  // median of a/b, run by run
};

// a and b in turn, runs times each after one of each that isn't counted.
Pair compare(const Work& a, const Work& b, int runs);

double wall_seconds();
// Of one thread: other programs take less part in it.
double processor_seconds();
// As compare, by one of these clocks, with something done before each that isn't timed.
Pair compare_prepared(const Work& prepare, const Work& a, const Work& b, int runs,
                      double (*clock)());

// Steps through a scene by --fast with a stepper that has planned, again and again.
class Steps {
 public:
  explicit Steps(Scene& scene);
  void operator()();
  // Makes all slices behind the first dark, as a step wants them.
  void clear();
  [[nodiscard]] double error() const { return error_; }  // the largest of the steps

 private:
  Scene& scene_;
  std::unique_ptr<Stepper> stepper_;
  double error_ = 0;
};

// A guide of index 1.5 in 1.45 whose radius grows along z, n samples a side, lit by a beam whose
// plane waves are all kept: three pairs of indices a step.
Scene growing_guide(int n, int slices);

// Ends the program with status 1 unless the fields of every slice agree within bound of its largest
// value.
void require_same(const Scene& a, const Scene& b, double bound, const std::string& what);

// One section each; every one verifies before it times.
void reference();  // the reference propagator against the plain nest of loops
void fast();       // transforms against the reference, their growth, and the transform's own time
void pairs();      // steps of many pairs of indices, within a tolerance
void memory();     // peak memory of either
void device();     // the device's kernels, on a GPU or the host stand-in
void planning();   // planning with wisdom and without
void csv();        // cross-section files
void edges();      // what comes back from absorbing edges: no time, but figures
void lens();       // a curved face in slices of several thicknesses, with levels and without
void levels();     // what the levels of such a face cost

}  // namespace bench
