#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>

#include "measure.h"

namespace bench {
namespace {

// Peak resident bytes of a process of its own that runs the work.
double peak_bytes(const Work& work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  rusage usage{};
  int status = 0;
  wait4(child, &status, 0, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024.0;
}

// Few plane waves, so that the reference gets through a large slice.
Scene smooth_beam(int side) {
  Scene scene = growing_guide(side, 3);
  const double width =
      side * scene.dx / 12;  // dark at the border, so no plane waves come from there
  scene.illuminate(
      [=](double x, double y) { return std::exp(-(x * x + y * y) / (width * width)); });
  return scene;
}

}  // namespace

void memory() {
  constexpr int kSide = 512;
  const double reference = peak_bytes([] {
    Scene scene = smooth_beam(kSide);
    scene.nz = 2;
    scene.propagate();
  });
  const double transformed = peak_bytes([] {
    Scene scene = smooth_beam(kSide);
    scene.propagate_by(make_fast_stepper);
  });
  const double slice = 16.0 * kSide * kSide;
  const double transfers = 3 * 24.0 * (kSide / 2 + 1) * (kSide / 2 + 1);
  std::printf("peak memory at %d x %d, three pairs\n", kSide, kSide);
  std::printf(
      "reference %.1f MB, fast %.1f MB: %.1f slices of the field more, the kept transfer "
      "functions (%.1f MB) left out\n",
      reference / 1e6, transformed / 1e6, (transformed - reference - transfers) / slice,
      transfers / 1e6);
}

}  // namespace bench
