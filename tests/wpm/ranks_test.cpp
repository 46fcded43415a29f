// The steppers of ranks, as the one rank that there is in a test.
#include <gtest/gtest.h>

#include <random>

#include "ranks/ranks.h"
#include "support/scene.h"
#include "wpm/edge.h"
#include "wpm/rolling_pair.h"
#include "wpm/screens.h"
#include "wpm/threads.h"
#include "wpm/windows.h"

namespace {

class RankScene : public testing::TestWithParam<NamedScene> {};

// Round-off alone separates them: a few thousand terms of a few units in the last place. The rows
// and columns of sheared slices are not shared out.
TEST_P(RankScene, EqualsReference) {
  Scene reference = GetParam().make();
  if (reference.nx != reference.ny) return;
  reference.propagate();
  for (const int threads : {1, 3}) {
    wpm::set_threads(threads);
    Scene fast = GetParam().make();
    Scene direct = GetParam().make();
    const SumCounts counts = fast.propagate_by(make_rank_fast_stepper);
    direct.propagate_by(make_rank_direct_stepper);
    wpm::set_threads(1);
    EXPECT_EQ(direct.E, reference.E);
    EXPECT_EQ(direct.F, reference.F);
    Scene one = GetParam().make();
    EXPECT_EQ(counts.transforms, one.propagate_by(make_fast_stepper).transforms);
    for (int k = 0; k < fast.nz; ++k) {
      EXPECT_LE(difference(reference, fast, k).field, 1e-13) << "slice " << k;
      EXPECT_LE(difference(reference, fast, k).flux, 1e-13) << "slice " << k;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Every, RankScene, testing::ValuesIn(scene_table()),
                         [](const auto& named) { return named.param.name; });

// A field that blows up is summed the plain way, one of nothing but NaN not at all.
TEST(Ranks, SickFieldsTakeTheDirectSum) {
  Scene scene(8, 8, 4, 0.4e-6, 0.3e-6, 0.2e-6, 1e-6);
  scene.fill(0, 4, 1.5);
  scene.E[3] = std::nan("");
  const SumCounts counts = scene.propagate_by(make_rank_fast_stepper);
  EXPECT_EQ(counts.transforms, 0);
  EXPECT_EQ(counts.known, 3);
  for (const int side : {8, 9}) {  // many plane waves, for which transforms are cheaper
    Scene huge(side, side, 2, 0.4e-6, 0.3e-6, 0.2e-6, 1e-6);
    huge.illuminate(
        [](double x, double y) { return 1e20 * std::exp(-(x * x + 2 * y * y) / 1e-12); });
    EXPECT_EQ(huge.propagate_by(make_rank_fast_stepper).direct, 1) << side;
  }
}

// As FFTW shares out lines: equal blocks, then a smaller one, then none.
TEST(Ranks, BlocksCoverEverythingOnce) {
  EXPECT_EQ(ranks::block_of(10, 4), 3);
  EXPECT_EQ(ranks::block_of(4, 5), 1);
  EXPECT_EQ(ranks::share(10).size(), 10);
}

// A rank's own columns of a rolling pair and of the masks are those of the whole slice.
TEST(Ranks, WindowsAreColumnsOfTheWhole) {
  struct_sysOptions so;
  so.reset();
  so.sysname = "test";
  so.f = 1e-6;
  so.nx = so.ny = 10;
  so.nz = 4;
  so.dx = 0.4, so.dy = 0.3, so.dz = 0.5;
  struct_layer guide;
  guide.t = WGUIDE;
  guide.z = 2;
  guide.r = 1;
  guide.n = 1.5;
  guide.ne = 1.4;
  struct_layer screen;
  screen.t = SCREEN;
  screen.r = 1;
  screen.transmission = 0.25;
  const IndexStack stack(so, {screen, guide}, true);
  const Grid& grid = stack.grid();
  const Window window = {3, 7, 0, 4};
  std::mt19937 random(1);
  std::vector<cpx> whole(grid.plane());
  for (cpx& value : whole) value = cpx(static_cast<double>(random() % 1000), 1.0);
  std::vector<cpx> part;
  for (int j = 0; j < 10; ++j)
    part.insert(part.end(), whole.begin() + j * 10 + 3, whole.begin() + j * 10 + 7);
  ASSERT_EQ(part.size(), wpm::samples_of(grid, window));

  RollingPair all(stack, whole.data(), std::vector<double>(100).data());
  RollingPair mine(stack, window, part.data(), std::vector<double>(40).data());
  const auto expect_columns = [](const cpx* slice, const cpx* columns) {
    for (int j = 0; j < 10; ++j)
      for (int i = 3; i < 7; ++i) EXPECT_EQ(columns[j * 4 + i - 3], slice[j * 10 + i]) << j << i;
  };
  expect_columns(all.at(0).E, mine.at(0).E);
  expect_columns(all.at(1).N, mine.at(1).N);
  ScreenMask(grid, stack.screens(), "test").apply(0, whole.data());
  ScreenMask(grid, window, stack.screens(), "test").apply(0, part.data());
  expect_columns(whole.data(), part.data());
  EdgeMask(grid, 1e-6, 1e-6).apply(1, whole.data());
  EdgeMask(grid, window, 1e-6, 1e-6).apply(1, part.data());
  expect_columns(whole.data(), part.data());
}

}  // namespace
