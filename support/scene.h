// A simulation in memory: grid, index volume and field, propagated by whichever propagator.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "wpm/march.h"
#include "wpm/stepper.h"
#include "wpm/wpm.h"

struct Scene {
  // Samples and spacings in metres; everything is filled for a unit wave straight on in vacuum.
  Scene(int nx, int ny, int nz, double dx, double dy, double dz, double lambda);

  // Index of slices first..end-1.
  void fill(int first, int end, const cpx& n);
  // Incident field, as a function of x and y in metres.
  void illuminate(const std::function<cpx(double, double)>& field);

  using Propagator = decltype(&zerith_3D);
  // Clears slices 1..nz-1 of E and F and propagates.
  void propagate(Propagator propagator = zerith_3D);
  // Likewise by the stepper that make returns; what it took.
  using StepperMaker = decltype(&make_fast_stepper);
  PropagationTotals propagate_by(StepperMaker make);

  [[nodiscard]] Grid grid() const;
  [[nodiscard]] StepOptions options() const;

  [[nodiscard]] std::size_t index(int k, int j, int i) const;
  [[nodiscard]] cpx at(int k, int j, int i) const { return E[index(k, j, i)]; }
  [[nodiscard]] double flux(int k) const;   // sum of F over slice k
  [[nodiscard]] double power(int k) const;  // sum of |E|^2 over slice k
  // The grid frequency number m in x, rad/m.
  [[nodiscard]] double frequency(int m) const;

  int nx, ny, nz;
  double dx, dy, dz, k0;
  bool do_evanescent_modes = true;
  bool is_magnetic_field = false;
  polarization pol = TE;
  bool is_trimmed = true;
  double tolerance = 0;
  std::vector<cpx> E, N, KX, KY;
  std::vector<double> F, X, Y;
};

// One step from start to end, of which all of the slice is requested.
StepResult step(Stepper& stepper, const Slice& from, const Slice& to);

// How far slice k of b lies from that of a: the largest difference over the largest value of a, and
// where the field's is. A NaN is infinitely far from everything, darkness differs absolutely.
struct SliceDifference {
  double field = 0.0;
  double flux = 0.0;
  std::size_t sample = 0;
};
SliceDifference difference(const Scene& a, const Scene& b, int k);

// A named scene and what it is there to show; the table that all propagators are held to.
struct NamedScene {
  std::string name;
  std::function<Scene()> make;

  // How a failing test is named.
  friend void PrintTo(const NamedScene& scene, std::ostream* out) { *out << scene.name; }
};

// Uniform media, index steps, loss, evanescent waves, both polarizations and none, the magnetic
// field, guides, odd and non-square grids, an index that differs at every sample.
const std::vector<NamedScene>& scene_table();
Scene scene_named(const std::string& name);
