// Sums of many pairs of indices by a few functions, within a tolerance.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include "support/scene.h"
#include "wpm/index_pairs.h"
#include "wpm/skeleton.h"

namespace {

// A graded lens, lit by a beam off its axis. It has hundreds of indices, or one per level. If it
// grows, its thickness and its range of indices increase along z.
Scene graded_lens(bool grows, double extinction, double tolerance, int levels = 250) {
  Scene scene(64, 64, 6, 0.35e-6, 0.3e-6, 0.2e-6, 1e-6);
  scene.is_trimmed = false;
  scene.tolerance = tolerance;
  for (int k = 0; k < scene.nz; ++k)
    for (int j = 0; j < scene.ny; ++j)
      for (int i = 0; i < scene.nx; ++i) {
        const double x = scene.X[static_cast<std::size_t>(i)];
        const double y = scene.Y[static_cast<std::size_t>(j)];
        const double profile = std::exp(-(x * x + y * y) / 25e-12) * (grows ? 1 + 0.02 * k : 1.0);
        const double rise = std::round(levels * profile) / levels;
        scene.N[scene.index(k, j, i)] = {(grows ? 1.5 - 3e-4 * k : 1.5) + 0.02 * rise,
                                         extinction * rise};
      }
  scene.illuminate([](double x, double y) {
    return 1e3 * std::exp(-((x - 1e-6) * (x - 1e-6) + y * y) / 3e-12);
  });
  return scene;
}

// The tolerance bounds the field and the flux of each of five steps.
TEST(ManyPairs, StayWithinTheTolerance) {
  for (const bool grows : {false, true})
    for (const double extinction : {0.0, 0.01})
      for (const double tolerance : {1e-4, grows ? 1e-3 : 1e-6}) {
        Scene exact = graded_lens(grows, extinction, 0);
        Scene few = graded_lens(grows, extinction, tolerance);
        EXPECT_EQ(exact.propagate_by(make_fast_stepper).interpolated, 0);
        EXPECT_EQ(few.propagate_by(make_fast_stepper).interpolated, 5);
        const SliceDifference last = difference(exact, few, 5);
        EXPECT_LE(last.field, 5 * tolerance) << grows << ' ' << extinction;
        EXPECT_GT(last.field, 1e-12) << "so it has not been summed pair by pair";
        EXPECT_LE(last.flux, 5 * tolerance) << grows << ' ' << extinction;
      }
}

// The error found at a few samples is at most the real one.
TEST(ManyPairs, SayWhatErrorWasFound) {
  Scene scene = graded_lens(true, 0.0, 1e-4);
  const auto stepper = make_fast_stepper(scene.grid(), scene.options());
  Scene exact = scene;
  exact.tolerance = 0;
  const std::size_t plane = scene.grid().plane();
  const StepResult result = step(*stepper, {scene.E.data(), scene.F.data(), scene.N.data()},
                                 {&scene.E[plane], &scene.F[plane], &scene.N[plane]});
  exact.propagate_by(make_fast_stepper);
  EXPECT_GT(result.error, 0.0);
  EXPECT_LE(result.error, 1.01 * difference(exact, scene, 1).field);
}

// Trimmed coefficients have steps, and a full spectrum has sharp cut-offs: neither is smooth.
TEST(ManyPairs, LeaveToTheExactSumWhatIsNotSmooth) {
  Scene trimmed = graded_lens(true, 0.0, 1e-6);
  trimmed.is_trimmed = true;
  EXPECT_EQ(trimmed.propagate_by(make_fast_stepper).interpolated, 0);
  Scene sharp = graded_lens(false, 0.0, 1e-6);
  sharp.illuminate([](double x, double y) { return x * x + y * y < 1e-12 ? 1e3 : 0.0; });
  EXPECT_LT(sharp.propagate_by(make_fast_stepper).interpolated, 5);
}

// A few levels are summed one by one faster than functions for them are found, also when the search
// repeats.
TEST(ManyPairs, LeaveToTheExactSumWhatItDoesSooner) {
  Scene exact = graded_lens(true, 0.0, 0, 4);
  Scene within = graded_lens(true, 0.0, 1e-4, 4);
  exact.propagate_by(make_fast_stepper);
  EXPECT_EQ(within.propagate_by(make_fast_stepper).transforms, 5);
  EXPECT_EQ(exact.E, within.E);
}

// Slices whose loss is not smooth in TM get no functions. They cost only their own steps.
TEST(ManyPairs, ServeAgainBehindSlicesThatTheyDoNot) {
  Scene scene = graded_lens(true, 0.0, 1e-3);
  scene.pol = TM;
  for (const int k : {1, 3}) scene.N[scene.index(k, 32, 36)] += cpx(0.0, 1e-3);
  EXPECT_EQ(scene.propagate_by(make_fast_stepper).interpolated, 1);
}

// Many recurring pairs: each is found once, and each sample has its own.
TEST(IndexPairs, AreDistinctAndEachSamplesOwn) {
  constexpr std::size_t kSamples = 5000, kIndices = 30;
  std::mt19937 random(1);
  std::vector<cpx> N_i(kSamples), N_t(kSamples);
  std::set<std::pair<double, double>> distinct;
  for (std::size_t s = 0; s < kSamples; ++s) {
    N_i[s] = 1.0 + 0.01 * static_cast<double>(random() % kIndices);
    N_t[s] = cpx(1.5, 0.01 * static_cast<double>(random() % kIndices));
    distinct.emplace(N_i[s].real(), N_t[s].imag());
  }
  IndexPairs found;
  find_index_pairs(N_i.data(), N_t.data(), kSamples, found);
  EXPECT_EQ(found.pairs.size(), distinct.size());
  for (std::size_t s = 0; s < kSamples; ++s) {
    EXPECT_EQ(found.pairs[found.which[s]].n_i, N_i[s]);
    EXPECT_EQ(found.pairs[found.which[s]].n_t, N_t[s]);
  }
}

// Random rows of rank three: all are combinations of three of them.
TEST(Skeleton, FindsTheRank) {
  std::mt19937 generator(1);
  std::normal_distribution<double> normal;
  wpm::Rows rows(9, std::vector<cpx>(20));
  for (int rank = 0; rank < 3; ++rank) {
    std::vector<cpx> direction(20);
    for (cpx& value : direction) value = {normal(generator), normal(generator)};
    for (auto& row : rows) {
      const cpx part(normal(generator), normal(generator));
      for (std::size_t k = 0; k < row.size(); ++k) row[k] += part * direction[k];
    }
  }
  const wpm::Skeleton skeleton = wpm::skeleton_of(rows, 1e-9);
  ASSERT_EQ(skeleton.chosen.size(), 3U);
  for (std::size_t row = 0; row < rows.size(); ++row)
    for (std::size_t k = 0; k < 20; ++k) {
      cpx sum = 0.0;
      for (std::size_t r = 0; r < 3; ++r)
        sum += skeleton.weights[row][r] * rows[skeleton.chosen[r]][k];
      EXPECT_NEAR(std::abs(sum - rows[row][k]), 0.0, 1e-12);
    }
}

}  // namespace
