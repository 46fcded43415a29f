// The fast propagator against the reference.
#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <random>

#include "support/scene.h"
#include "wpm/axis.h"

namespace {

// Two materials in shapes that change from slice to slice, so pairs come and recur.
Scene random_stack(int nx, int ny, int nz, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> spread(0.0, 1.0);
  Scene scene(nx, ny, nz, 0.35e-6, 0.3e-6, 0.2e-6, 1e-6);
  for (int k = 0; k < nz; ++k) {
    const cpx core(1.3 + 0.3 * spread(generator), k % 3 == 0 ? 0.001 : 0.0);
    const double cx = 2e-6 * (spread(generator) - 0.5);
    const double radius = 1e-6 * spread(generator);
    for (int j = 0; j < ny; ++j)
      for (int i = 0; i < nx; ++i) {
        const double x = scene.X[static_cast<std::size_t>(i)] - cx;
        const double y = scene.Y[static_cast<std::size_t>(j)];
        scene.N[scene.index(k, j, i)] = x * x + y * y > radius * radius ? cpx(1.3) : core;
      }
  }
  scene.illuminate(
      [](double x, double y) { return 1e8 * std::exp(cpx(-(x * x + y * y) / 2e-12, 1e6 * x)); });
  return scene;
}

class FastScene : public testing::TestWithParam<NamedScene> {};

// Round-off alone separates the two: a few thousand terms of a few units in the last place.
TEST_P(FastScene, FastEqualsReference) {
  Scene reference = GetParam().make();
  reference.propagate();
  for (const int threads : {1, 3}) {
    omp_set_num_threads(threads);
    Scene fast = GetParam().make();
    fast.propagate(zerith_fast_3D);
    omp_set_num_threads(1);
    for (int k = 0; k < fast.nz; ++k) {
      EXPECT_LE(difference(reference, fast, k).field, 1e-13) << "slice " << k;
      EXPECT_LE(difference(reference, fast, k).flux, 1e-13) << "slice " << k;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Every, FastScene, testing::ValuesIn(scene_table()),
                         [](const auto& named) { return named.param.name; });

// Left out, the drift of the axes costs 1e-7 of the field here; a hundred slices of it, and of the
// round-off, must leave 1e-11.
TEST(Fast, StaysWithTheReferenceForAHundredSlices) {
  for (const auto& [nx, ny] : {std::pair(24, 24), std::pair(21, 21), std::pair(20, 28)}) {
    Scene reference = random_stack(nx, ny, 101, 7);
    Scene fast = reference;
    reference.propagate();
    fast.propagate(zerith_fast_3D);
    const SliceDifference last = difference(reference, fast, 100);
    EXPECT_LE(last.field, 1e-11) << nx << " x " << ny;
    EXPECT_LE(last.flux, 1e-11) << nx << " x " << ny;
    EXPECT_GT(fast.power(100), 0.0);
  }
}

// What is not finite goes to the direct sum and comes out as it would there.
TEST(Fast, LeavesTheStrangeToTheDirectSum) {
  for (const cpx n : {cpx(0.0), cpx(1.0, -2e3), cpx(HUGE_VAL)}) {
    Scene reference(8, 8, 3, 0.3e-6, 0.3e-6, 0.25e-6, 1e-6);
    reference.N[reference.index(1, 3, 5)] = n;
    Scene fast = reference;
    reference.propagate();
    fast.propagate(zerith_fast_3D);
    for (std::size_t s = 0; s < fast.E.size(); ++s)
      EXPECT_TRUE(fast.E[s] == reference.E[s] ||
                  (std::isnan(fast.E[s].real()) && std::isnan(reference.E[s].real())) ||
                  std::abs(fast.E[s] - reference.E[s]) <= 1e-13)
          << n << " sample " << s;
  }
}

// Axes of another making are not a transform's.
TEST(Fast, TakesOnlyRegularAxesForTransforms) {
  Scene scene(9, 8, 2, 0.3e-6, 0.3e-6, 0.25e-6, 1e-6);
  EXPECT_TRUE(is_regular(scene.KX.data(), scene.X.data(), 9));
  EXPECT_TRUE(is_regular(scene.KY.data(), scene.Y.data(), 8));
  std::vector<double> stretched = scene.X;
  stretched[3] *= 1.001;
  EXPECT_FALSE(is_regular(scene.KX.data(), stretched.data(), 9));
  const std::vector<double> zeros(9);
  EXPECT_FALSE(is_regular(scene.KX.data(), zeros.data(), 9));

  Scene reference = scene;
  reference.X = scene.X = stretched;
  reference.propagate();
  scene.propagate(zerith_fast_3D);
  EXPECT_EQ(scene.E, reference.E);
}

}  // namespace
