// The stack painted in pieces against the same painted whole, and the numbers of its stretches
// against the slices themselves.
#include <gtest/gtest.h>

#include <cmath>

#include "painted.h"

namespace {

const cpx kUnwritten(-7.0, 7.0);

struct_layer layer(component t, double z, double n) {
  return {.t = t,
          .x = 0.5,
          .z = z,
          .r = 2.5,
          .px = 6,
          .wx = 1,
          .py = 9,
          .wy = 3,
          .rin = 1,
          .rout = 3,
          .n = n,
          .k = 0.01,
          .ne = 1.25,
          .ke = 0.02};
}

// Every kind, none of them first, and two of which one goes back over the other.
std::vector<struct_layer> stack_of_all() {
  std::vector<struct_layer> layers = {layer(HOMOG, 1, 1.5)};
  for (const component t : {LENS, GRATING, ASPHERE, WGUIDE, SPLITTER, MZEHNDER, TAPER})
    layers.push_back(layer(t, 2, 1.75));
  layers.push_back(layer(HOMOG, -5, 1.5));
  layers.push_back(layer(GRATING, 2, 2));
  layers.push_back(layer(HOMOG, 1, 1.5));
  return layers;
}

TEST(IndexStack, PiecesAreThoseOfTheWhole) {
  const Painted all(8, 8, 30, stack_of_all());
  const std::vector<cpx> whole = all.paint(all.stack->whole());
  for (const Window& w :
       {Window{0, 8, 3, 4}, {0, 8, 13, 29}, {3, 5, 0, 30}, {7, 8, 9, 10}, {4, 4, 0, 30}}) {
    const std::vector<cpx> piece = all.paint(w);
    std::size_t at = 0;
    for (int k = w.z_begin; k < w.z_end; ++k)
      for (int j = w.y_begin; j < w.y_end; ++j)
        for (int i = 0; i < 8; ++i)
          EXPECT_EQ(piece[at++], whole[std::size_t((k * 8 + j) * 8 + i)]) << k << ' ' << j;
  }
  EXPECT_EQ(whole[std::size_t(12 * 64)], cpx(0.0));  // of a reserved kind, which writes nothing
}

// What the rasterisers write one after another, rows that run into one another included.
TEST(IndexStack, IsWhatTheRasterisersWriteInTurn) {
  for (const auto& [nx, ny] : {std::pair(8, 8), {9, 5}, {4, 9}, {1, 6}}) {
    const Painted all(nx, ny, 30, stack_of_all());
    std::vector<cpx> expected(std::size_t(nx * ny * 30), 0.0);
    struct_sysOptions so = all.so;
    so.izlast = 0;
    for (const struct_layer& l : all.layers) {
      const auto rasteriser = l.t == HOMOG      ? init_homog_system
                              : l.t == GRATING  ? init_grating_system
                              : l.t == WGUIDE   ? init_wguide_system
                              : l.t == TAPER    ? init_taper_system
                              : l.t == SPLITTER ? init_splitter_system
                              : l.t == LENS     ? init_lens_system
                                                : init_asphere_system;
      so.izlast += rasteriser(expected.data(), &so, l);
    }
    EXPECT_EQ(all.paint({0, ny, 0, 30}), expected) << nx << " x " << ny;
    EXPECT_EQ(all.so.izlast, so.izlast);
  }
}

TEST(IndexStack, StretchesAreEqualSlicesAndNotTooFew) {
  const Painted all(8, 8, 30, stack_of_all());
  for (int k = 1; k < 30; ++k)
    if (all.stack->stretch(k) == all.stack->stretch(k - 1))
      EXPECT_EQ(all.slice(k), all.slice(k - 1)) << k;
    else
      EXPECT_EQ(all.stack->stretch(k), all.stack->stretch(k - 1) + 1) << k;
  EXPECT_EQ(all.stack->stretch(-1), -1);
  EXPECT_EQ(all.stack->stretch(30), -1);

  // Slices 0 and 1 of one medium, though of two layers; a slab, a cross and a guide are one
  // stretch each, and so is what a lens leaves to the other material beyond its sphere, which
  // begins at slice 13, two radii before the last one.
  const Painted few(8, 8, 24,
                    {layer(HOMOG, 0.5, 1.5), layer(HOMOG, 0.5, 1.5), layer(GRATING, 2, 1.5),
                     layer(WGUIDE, 2, 1.5), layer(LENS, 7, 1.5)});
  const int expected[] = {0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 4};
  for (int k = 0; k < 14; ++k) EXPECT_EQ(few.stack->stretch(k), expected[k]) << k;
  EXPECT_NE(few.stack->stretch(14), few.stack->stretch(15));

  // Rows of other grids run over into later slices: no two are taken for equal.
  const Painted tall(4, 6, 3, {layer(HOMOG, 9, 1.5)});
  EXPECT_NE(tall.stack->stretch(1), tall.stack->stretch(2));
}

// Signs of zero and not-a-numbers count.
TEST(IndexStack, StretchesAreEqualToTheBit) {
  const Painted zeros(4, 4, 2, {layer(HOMOG, 0.5, 0.0), layer(HOMOG, 0.5, -0.0)});
  EXPECT_NE(zeros.stack->stretch(0), zeros.stack->stretch(1));
  struct_layer nowhere = layer(WGUIDE, 1, 1.5);
  nowhere.x = std::nan("");
  const Painted all(4, 4, 2, {nowhere});
  EXPECT_EQ(all.slice(1)[3], cpx(1.5, 0.01));  // nothing is outside of such a core
}

// A slice of a stretch that nothing paints keeps what it holds, or is cleared.
TEST(IndexStack, LeavesOrClearsWhatNobodyPaints) {
  const Painted gap(4, 4, 6, {layer(HOMOG, 1, 1.5), layer(ASPHERE, 1, 1), layer(HOMOG, 0.5, 1.5)});
  std::vector<cpx> N(std::size_t(6 * 16), kUnwritten);
  gap.stack->paint_onto(N.data(), gap.stack->whole());
  const cpx n(1.5, 0.01);
  const cpx kept[] = {n, n, kUnwritten, kUnwritten, n, kUnwritten};
  for (std::size_t k = 0; k < 6; ++k) EXPECT_EQ(N[k * 16 + 15], kept[k]);
  N = gap.paint(gap.stack->whole());
  for (std::size_t k = 0; k < 6; ++k)
    EXPECT_EQ(N[k * 16 + 15], kept[k] == kUnwritten ? cpx(0.0) : n);
}

// A size of 0 is taken for 1.
TEST(IndexStack, PaintsTheOneSliceOfAGridWithoutAny) {
  const Painted flat(4, 4, 0, {layer(HOMOG, 5, 1.5)});
  EXPECT_EQ(flat.stack->whole().slices(), 1);
  EXPECT_EQ(flat.paint(flat.stack->whole()), std::vector<cpx>(16, cpx(1.5, 0.01)));
  EXPECT_EQ(flat.so.izlast, 1);
}

}  // namespace
