// The division of lines among ranks.
#include <gtest/gtest.h>

#include <random>

#include "ranks/ranks.h"
#include "wpm/edge.h"
#include "wpm/rolling_pair.h"
#include "wpm/screens.h"

namespace {

// Whole groups of eight lines, then the rest. Every line has one rank. Ranks differ by at most one
// group. The first rank has the first line.
TEST(Ranks, SharesCoverEverythingOnce) {
  for (const int n : {0, 1, 8, 9, 18, 64, 1000})
    for (const int count : {1, 2, 3, 5, 11}) {
      int end = 0;
      for (int rank = 0; rank < count; ++rank) {
        const ranks::Share share = ranks::share_of(n, rank, count);
        EXPECT_EQ(share.begin, end) << n << " lines, rank " << rank << " of " << count;
        EXPECT_TRUE(share.end == n || share.end % ranks::kGroup == 0) << n << ' ' << count;
        const int groups = ranks::groups_of(share.size());
        EXPECT_LE(groups, (ranks::groups_of(n) + count - 1) / count) << n << ' ' << count;
        EXPECT_GE(groups, ranks::groups_of(n) / count) << n << ' ' << count;
        end = share.end;
      }
      EXPECT_EQ(end, n) << count;
      EXPECT_EQ(ranks::share_of(n, 0, count).holds(0), n > 0) << n << ' ' << count;
    }
}

// A rank's rows of a rolling pair and of the masks are those of the whole slice.
TEST(Ranks, WindowsAreRowsOfTheWhole) {
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
  std::vector<cpx> part(whole.begin() + 30, whole.begin() + 70);
  ASSERT_EQ(part.size(), plane_of(grid, window));

  RollingPair all(stack, whole.data(), std::vector<double>(100).data());
  RollingPair mine(stack, window, part.data(), std::vector<double>(40).data());
  const auto expect_rows = [](const cpx* slice, const cpx* rows) {
    for (int s = 0; s < 40; ++s) EXPECT_EQ(rows[s], slice[30 + s]) << s;
  };
  expect_rows(all.at(0).E, mine.at(0).E);
  expect_rows(all.at(1).N, mine.at(1).N);
  ScreenMask(grid, stack.screens(), "test").apply(0, whole.data());
  ScreenMask(grid, window, stack.screens(), "test").apply(0, part.data());
  expect_rows(whole.data(), part.data());
  EdgeMask(grid, 1e-6, 1e-6).apply(1, whole.data());
  EdgeMask(grid, window, 1e-6, 1e-6).apply(1, part.data());
  expect_rows(whole.data(), part.data());
}

}  // namespace
