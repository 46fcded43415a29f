#include "support/scene.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "constants.h"
#include "wpm/march.h"
#include "wpm/whole_volume.h"

Scene::Scene(int nx_, int ny_, int nz_, double dx_, double dy_, double dz_, double lambda)
    : nx(nx_), ny(ny_), nz(nz_), dx(dx_), dy(dy_), dz(dz_), k0(kTwoPi / lambda) {
  const auto width = static_cast<std::size_t>(nx);
  const auto height = static_cast<std::size_t>(ny);
  const std::size_t voxels = width * height * static_cast<std::size_t>(nz);
  E.assign(voxels, 0.0);
  F.assign(voxels, 0.0);
  N.assign(voxels, 1.0);
  X.assign(width, 0.0);
  Y.assign(height, 0.0);
  KX.assign(width, 0.0);
  KY.assign(height, 0.0);
  init_X(X.data(), nx, dx);
  init_X(Y.data(), ny, dy);
  init_F(KX.data(), nx, kTwoPi / (nx * dx));
  init_F(KY.data(), ny, kTwoPi / (ny * dy));
  illuminate([](double, double) { return 1.0; });
}

std::size_t Scene::index(int k, int j, int i) const {
  return static_cast<std::size_t>((k * ny + j) * nx + i);
}

void Scene::fill(int first, int end, const cpx& n) {
  std::fill(N.begin() + static_cast<std::ptrdiff_t>(index(first, 0, 0)),
            N.begin() + static_cast<std::ptrdiff_t>(index(end, 0, 0)), n);
}

void Scene::illuminate(const std::function<cpx(double, double)>& field) {
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i)
      E[index(0, j, i)] = field(X[static_cast<std::size_t>(i)], Y[static_cast<std::size_t>(j)]);
}

void Scene::propagate(Propagator propagator) {
  const auto slice = static_cast<std::ptrdiff_t>(nx) * ny;
  std::fill(E.begin() + slice, E.end(), 0.0);
  std::fill(F.begin() + slice, F.end(), 0.0);
  propagator(E.data(), F.data(), N.data(), KX.data(), X.data(), KY.data(), Y.data(), k0, dz, dy, dx,
             nz, ny, nx, do_evanescent_modes, is_magnetic_field, pol);
}

Grid Scene::grid() const {
  Grid grid;
  grid.nx = nx, grid.ny = ny, grid.nz = nz;
  grid.dx = dx, grid.dy = dy, grid.dz = dz;
  return grid;
}

StepOptions Scene::options() const {
  return {k0, dz, do_evanescent_modes, is_magnetic_field, pol, is_trimmed, tolerance};
}

PropagationTotals Scene::propagate_by(StepperMaker make) {
  const auto slice = static_cast<std::ptrdiff_t>(nx) * ny;
  std::fill(E.begin() + slice, E.end(), 0.0);
  std::fill(F.begin() + slice, F.end(), 0.0);
  const auto stepper = make(grid(), options());
  WholeVolume slices(grid(), E.data(), F.data(), N.data());
  PropagationTotals totals;
  ::propagate(grid(), slices, *stepper, {}, {}, {}, kFromTheEntry, totals);
  return totals;
}

StepResult step(Stepper& stepper, const Slice& from, const Slice& to) {
  stepper.start(from, to, {.E = true, .F = true});
  return stepper.wait();
}

double Scene::flux(int k) const {
  double sum = 0.0;
  for (std::size_t s = index(k, 0, 0); s < index(k + 1, 0, 0); ++s) sum += F[s];
  return sum;
}

double Scene::power(int k) const {
  double sum = 0.0;
  for (std::size_t s = index(k, 0, 0); s < index(k + 1, 0, 0); ++s) sum += std::norm(E[s]);
  return sum;
}

double Scene::frequency(int m) const {
  return m * (kTwoPi / (nx * dx));
}

SliceDifference difference(const Scene& a, const Scene& b, int k) {
  SliceDifference worst;
  double largest_E = 0.0;
  double largest_F = 0.0;
  const auto or_infinite = [](double d) { return std::isnan(d) ? HUGE_VAL : d; };
  for (std::size_t s = a.index(k, 0, 0); s < a.index(k + 1, 0, 0); ++s) {
    largest_E = std::max(largest_E, std::abs(a.E[s]));
    largest_F = std::max(largest_F, std::fabs(a.F[s]));
    const double field = or_infinite(std::abs(a.E[s] - b.E[s]));
    if (field > worst.field) worst.sample = s - a.index(k, 0, 0);
    worst.field = std::max(worst.field, field);
    worst.flux = std::max(worst.flux, or_infinite(std::fabs(a.F[s] - b.F[s])));
  }
  if (largest_E > 0.0) worst.field /= largest_E;
  if (largest_F > 0.0) worst.flux /= largest_F;
  return worst;
}

namespace {

constexpr double kLambda = 1e-6;

// A narrow off-axis beam that fills the spectrum, evanescent part included. Large, so that few
// plane waves fall under the absolute cut-off.
Scene beam_scene(int nx, int ny, int nz) {
  Scene scene(nx, ny, nz, 0.3e-6, 0.34e-6, 0.25e-6, kLambda);
  scene.illuminate([](double x, double y) {
    const double u = x - 0.2e-6;
    const double v = y + 0.4e-6;
    return 1e3 * std::exp(cpx(-(u * u + v * v) / 0.36e-12, 2e6 * x));
  });
  return scene;
}

// A guide of index 1.5 in 1.45 that begins behind a slab of 1, offset and growing in z.
Scene guide_scene(int nx, int ny, int nz, const cpx& core, const cpx& cladding) {
  Scene scene = beam_scene(nx, ny, nz);
  for (int k = 2; k < nz; ++k)
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i) {
        const double x = scene.X[static_cast<std::size_t>(i)];
        const double y = scene.Y[static_cast<std::size_t>(j)];
        const double radius = 0.5e-6 + 0.06e-6 * k;
        scene.N[scene.index(k, j, i)] = x * x + y * y > radius * radius ? cladding : core;
      }
  return scene;
}

// Every sample has an index of its own.
Scene random_index_scene(int nx, int ny, int nz, double extinction) {
  Scene scene = beam_scene(nx, ny, nz);
  std::mt19937 generator(1);
  std::uniform_real_distribution<double> spread(0.0, 1.0);
  for (cpx& n : scene.N) n = cpx(1.0 + 0.8 * spread(generator), extinction * spread(generator));
  return scene;
}

NamedScene with(std::string name, const std::function<Scene()>& make,
                const std::function<void(Scene&)>& change) {
  return {std::move(name), [make, change] {
            Scene scene = make();
            change(scene);
            return scene;
          }};
}

}  // namespace

const std::vector<NamedScene>& scene_table() {
  const auto beam = [] { return beam_scene(16, 16, 6); };
  const auto guide = [] { return guide_scene(16, 16, 6, 1.5, 1.45); };
  const auto lossy = [] { return guide_scene(16, 16, 6, {1.5, 0.02}, {1.2, 0.1}); };
  const auto step_up = [](Scene& s) { s.fill(3, s.nz, 2.0); };
  const auto step_down = [](Scene& s) {
    s.fill(0, 3, 2.0);
    s.fill(3, s.nz, 1.2);
  };
  // Each slice of a magnetic field is weaker by n/(k0 * 377), some 4e-10: start high.
  const auto magnetic = [](Scene& s) {
    s.is_magnetic_field = true;
    for (cpx& e : s.E) e *= 1e9;
  };
  static const std::vector<NamedScene> table = {
      {"uniform", beam},
      with("uniform_no_evanescent", beam, [](Scene& s) { s.do_evanescent_modes = false; }),
      with("uniform_lossy", beam,
           [](Scene& s) {
             s.fill(0, s.nz, {1.3, 0.05});
           }),
      with("loss_changes_alone", beam,
           [](Scene& s) {
             s.fill(2, s.nz, {1.0, 0.2});
           }),
      with("step_up_TE", beam, step_up),
      with("step_up_TM", beam, [=](Scene& s) { step_up(s), s.pol = TM; }),
      with("step_up_no_polarization", beam, [=](Scene& s) { step_up(s), s.pol = NA; }),
      with("step_down_TE", beam, step_down),
      with("step_down_TM", beam, [=](Scene& s) { step_down(s), s.pol = TM; }),
      with("step_down_no_evanescent", beam,
           [=](Scene& s) { step_down(s), s.do_evanescent_modes = false; }),
      {"guide_TE", guide},
      with("guide_TM", guide, [](Scene& s) { s.pol = TM; }),
      with("guide_magnetic", guide, magnetic),
      {"lossy_guide_TE", lossy},
      with("lossy_guide_TM_magnetic", lossy, [=](Scene& s) { magnetic(s), s.pol = TM; }),
      {"odd_guide", [] { return guide_scene(15, 15, 5, 1.5, 1.45); }},
      {"wide_guide", [] { return guide_scene(18, 12, 5, 1.5, 1.45); }},
      {"tall_odd_guide", [] { return guide_scene(10, 15, 5, 1.5, 1.45); }},
      {"single_column", [] { return guide_scene(1, 16, 4, 1.5, 1.45); }},
      {"index_of_its_own", [] { return random_index_scene(16, 16, 4, 0.0); }},
      with(
          "lossy_index_of_its_own_TM", [] { return random_index_scene(12, 12, 4, 0.05); },
          [](Scene& s) { s.pol = TM; }),
      with("gain", beam,
           [](Scene& s) {
             s.fill(1, s.nz, {1.4, -0.05});
           }),
      with("nothing_incident", beam,
           [](Scene& s) { s.illuminate([](double, double) { return 0.0; }); }),
  };
  return table;
}

Scene scene_named(const std::string& name) {
  return std::ranges::find(scene_table(), name, &NamedScene::name)->make();
}
