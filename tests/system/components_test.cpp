// The rasterisers against pictures drawn by hand: '#' is the first material, '.' the second, '?' a
// voxel that nothing has written. A blank stands behind each row.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <span>

#include "support/errors.h"
#include "system/slab.h"
#include "system/system.h"

namespace {

const cpx kFirst(1.5, 0.25), kSecond(1.25, 0.5), kUnwritten(-7.0, 7.0);

using Rasteriser = int (*)(cpx*, const struct_sysOptions*, const struct_layer&);

// The last two are reserved and paint nothing.
const Rasteriser kAll[] = {init_homog_system,   init_grating_system,  init_wguide_system,
                           init_taper_system,   init_splitter_system, init_lens_system,
                           init_asphere_system, init_mzehnder_system};
const auto kPainting = std::span(kAll).first<6>();

// Samples one micrometre apart, in a file that counts in micrometres.
struct Canvas {
  Canvas(int nx, int ny, int nz, int izlast = 0) : N(std::size_t(nx * ny * nz), kUnwritten) {
    so.nx = nx, so.ny = ny, so.nz = nz, so.izlast = izlast;
    so.f = 1e-6;
  }
  std::string paint(Rasteriser rasteriser, struct_layer l) {
    l.n = kFirst.real(), l.k = kFirst.imag(), l.ne = kSecond.real(), l.ke = kSecond.imag();
    taken = rasteriser(N.data(), &so, l);
    std::string picture;
    for (std::size_t i = 0; i < N.size(); ++i) {
      picture += N[i] == kFirst ? '#' : N[i] == kSecond ? '.' : N[i] == kUnwritten ? '?' : '!';
      if ((i + 1) % std::size_t(so.nx) == 0) picture += ' ';
    }
    return picture;
  }

  struct_sysOptions so;
  std::vector<cpx> N;  // of exact size, so that the address sanitizer sees a slip
  int taken = INT_MIN;
};

const std::string kDot = "...... ...... ...... ...#.. ...... ...... ";

struct_layer thick(double z) {
  return {.z = z, .r = 1, .px = 4, .wx = 1, .py = 4, .wy = 1, .rin = 1, .rout = 1};
}

TEST(Components, TakeWholeSlicesUpToTheEnd) {
  struct Case {
    double thickness, spacing;
    int izlast, taken;
  };
  const Case kCases[] = {{10, 3, 0, 4},          {9, 3, 0, 3},      {0, 3, 0, 0},
                         {10, 3, 4, 2},          {10, 3, 6, 0},     {-7, 3, 5, -2},
                         {1e300, 3, 0, INT_MIN}, {5e8, 0.25, 2, 4}, {1e9, 0.25, 2, INT_MIN}};
  for (std::size_t i = 0; i < std::size(kAll); ++i)
    for (const Case& c : kCases) {
      Canvas canvas(4, 4, 6, c.izlast);
      canvas.so.dz = c.spacing;
      const std::string picture = canvas.paint(kAll[i], thick(c.thickness));
      EXPECT_EQ(canvas.taken, c.taken) << c.thickness << " at " << c.izlast;
      const int painted = i < kPainting.size() ? c.taken : 0;
      for (int iz = 0; iz < 6; ++iz) {
        const std::string slice = picture.substr(std::size_t(iz) * 20, 20);
        const bool is_inside = iz >= c.izlast && iz < c.izlast + painted;
        EXPECT_EQ(std::ranges::count(slice, '?'), is_inside ? 0 : 16) << i << " slice " << iz;
      }
    }
}

// (1.93 * 1e-6) / 1e-6 is 1.9299999999999997 in double arithmetic, so two spacings are a little
// more than two of its slices. The lens counts in the file's unit throughout.
TEST(Components, LastBitOfTheSpacingDecides) {
  for (const Rasteriser rasteriser : kPainting) {
    Canvas canvas(4, 4, 6);
    canvas.so.dz = 1.93;
    canvas.paint(rasteriser, thick(3.86));
    EXPECT_EQ(canvas.taken, rasteriser == init_lens_system ? 2 : 3);
  }
}

TEST(Components, SpacingOfZeroCountsAsOneMetreButForTheLens) {
  Canvas canvas(2, 1, 3);
  canvas.so.dx = canvas.so.dy = canvas.so.dz = 0;
  EXPECT_EQ(canvas.paint(init_homog_system, thick(2e6)), "## ## ?? ");  // micrometres
  canvas.paint(init_lens_system, thick(1));
  EXPECT_EQ(canvas.taken, INT_MIN);  // what becomes of infinity in an int
  for (const double outside : {2147483648.0, -2147483648.9, std::nan("")})
    EXPECT_EQ(truncate_to_int(outside), INT_MIN) << outside;
}

// What a component looks like does not depend on where it stands, in slices that lie otherwise
// apart than samples do.
TEST(Components, LookTheSameAnywhereInTheStack) {
  for (const double radius : {1.0, -1.5})
    for (const Rasteriser rasteriser : kPainting) {
      struct_layer l = thick(0.5);
      l.r = radius, l.rin = 0.5, l.rout = 2;
      Canvas first(6, 6, 2), behind(6, 6, 5, 3);
      first.so.dz = behind.so.dz = 0.25;
      const std::string untouched = Canvas(6, 6, 3).paint(init_asphere_system, thick(0));
      EXPECT_EQ(behind.paint(rasteriser, l), untouched + first.paint(rasteriser, l));
    }
}

// Half as far apart in y as in x: a disc is twice as many samples high as it is wide.
TEST(Components, ReadTheSpacingOfEachAxis) {
  const auto paint = [](Rasteriser rasteriser, int nx, int ny, int nz, const struct_layer& l) {
    Canvas canvas(nx, ny, nz);
    canvas.so.dy = 0.5, canvas.so.dz = 0.25;
    return canvas.paint(rasteriser, l);
  };
  const std::string high = "...... ...#.. ...#.. ..###. ...#.. ...#.. ";
  const struct_layer disc = {.z = 0.25, .r = 1, .rin = 1, .rout = 1};
  EXPECT_EQ(paint(init_wguide_system, 6, 6, 1, disc), high);
  EXPECT_EQ(paint(init_taper_system, 6, 6, 1, disc), high);
  // 0.75^2 twice is 1.125, as good as 1.
  EXPECT_EQ(paint(init_splitter_system, 6, 6, 1, {.z = 0.25, .rin = 0.75, .rout = 0.75}), high);
  // A slice before its end the sphere's squared radius is 1 - 0.75^2.
  EXPECT_EQ(paint(init_lens_system, 6, 6, 2, {.z = 0.5, .r = 1}),
            "...... ...... ...#.. ...#.. ...#.. ...... " + kDot);
  // Its vertex is one sample, in the middle of either axis: (2, 3), in rows of 6.
  EXPECT_EQ(paint(init_lens_system, 4, 6, 1, {.z = 0.25, .r = 1}).find('#'), 5U * 5);
  // Lengths in samples as in the picture below.
  EXPECT_EQ(
      paint(init_grating_system, 12, 12, 1, {.z = 0.25, .px = 8, .wx = 2, .py = 4, .wy = 2.5}),
      Canvas(12, 12, 1).paint(init_grating_system, {.z = 1, .px = 8, .wx = 2, .py = 8, .wy = 5}));
}

// A size of 0 counts as 1: one slice of 4 x 4, on a buffer of the caller.
TEST(Components, SizeOfZeroCountsAsOne) {
  for (const Rasteriser rasteriser : kPainting) {
    Canvas canvas(4, 4, 1);
    canvas.so.nz = 0;
    const std::string picture = canvas.paint(rasteriser, thick(5));
    EXPECT_EQ(std::ranges::count(picture, '?'), 0) << picture;
    EXPECT_EQ(canvas.taken, 1);
  }
}

// Rows step by ny, so those of a 4 x 2 slice overlap and those of a 2 x 4 slice leave gaps and run
// over into the next one; past the ends of the array nothing is written.
TEST(Components, RowsStepByNy) {
  EXPECT_EQ(Canvas(4, 2, 2).paint(init_homog_system, thick(2)), "#### ##?? #### ##?? ");
  EXPECT_EQ(Canvas(2, 4, 2).paint(init_homog_system, thick(1)), "## ?? ## ?? ## ?? ## ?? ");
  EXPECT_EQ(Canvas(2, 4, 2, -1).paint(init_homog_system, thick(1)), "## ?? ## ?? ?? ?? ?? ?? ");

  // Where rows overlap the later write wins: the guide goes column by column, the taper row by row.
  // In the disc of radius 1 about (2, 1) lie (2,0), (1,1), (2,1) and (3,1).
  EXPECT_EQ(Canvas(4, 2, 1).paint(init_wguide_system, thick(1)), "..#. ##?? ");
  EXPECT_EQ(Canvas(4, 2, 1).paint(init_taper_system, thick(1)), "...# ##?? ");

  for (const Rasteriser rasteriser : kPainting)
    for (const auto& [nx, ny] : {std::pair(1, 9), {3, 7}, {9, 1}, {5, 6}})
      for (const int izlast : {-9, -1, 0, 1}) {
        Canvas canvas(nx, ny, 2, izlast);
        canvas.paint(rasteriser, thick(9));
        EXPECT_EQ(canvas.taken, std::min(9, 2 - izlast));
      }
}

// Period 8 and width 2: the modulus is 4, the threshold 1, so columns 6 and up are off the bars at
// 2 and 3 modulo 4, and the other half mirrors them. In y a width of 5 shifts by 1 and leaves only
// 2 modulo 4 off.
TEST(Grating, IsACrossOfBarsMirroredFromOneQuadrant) {
  struct_layer l = {.z = 1, .px = 8, .wx = 2, .py = 8, .wy = 5};
  const std::string bar = "############ ", cells = "..##....##.. ";
  EXPECT_EQ(Canvas(12, 12, 1).paint(init_grating_system, l),
            bar + cells + bar + bar + bar + cells + cells + bar + bar + bar + cells + bar);

  // Odd sizes: the centre is its own mirror. Period 4, width 0: only odd columns are off.
  l = {.z = 1, .px = 4, .py = 4};
  EXPECT_EQ(Canvas(5, 5, 1).paint(init_grating_system, l), "##### #.#.# ##### #.#.# ##### ");
  l.px = l.py = 3;  // a modulus of 1: no remainder, no cell
  EXPECT_EQ(Canvas(2, 2, 1).paint(init_grating_system, l), "## ## ");
}

TEST(Grating, PeriodIsAtLeastTwoSamples) {
  const auto paint = [](double px, double py, double z) {
    Canvas(4, 4, 2).paint(init_grating_system, {.z = z, .px = px, .py = py});
  };
  paint(0, 0, 0);  // no slice, no harm
  paint(1.1, 2, 1);
  EXPECT_ERROR(paint(1, 4, 1), "px = 1 .*spacing is 1");
  EXPECT_ERROR(paint(4, 0, 1), "py = 0 .*spacing is 1");
}

const std::string kPlus = "...... ...... ...#.. ..###. ...#.. ...... ";
const std::string kPlusAside = "...... ....#. ...### ....#. ...... ...... ";  // by 1 and -1
const std::string kBlock = "...... ...... ..###. ..###. ..###. ...... ";

TEST(Guide, IsARoundCoreAboutTheCentreRimIncluded) {
  struct_layer l = {.z = 2, .r = -1};  // squared
  EXPECT_EQ(Canvas(6, 6, 2).paint(init_wguide_system, l), kPlus + kPlus);
  l.x = 1, l.y = -1;
  EXPECT_EQ(Canvas(6, 6, 1).paint(init_wguide_system, l), kPlusAside);
}

TEST(Taper, RadiusRunsFromTheEntryAndNeverReachesTheExit) {
  struct_layer l = {.z = 2, .rout = 2};
  EXPECT_EQ(Canvas(6, 6, 2).paint(init_taper_system, l), kDot + kPlus);
  l.z = 40;  // cut at the end of the domain: the slope is that of what is left
  EXPECT_EQ(Canvas(6, 6, 2).paint(init_taper_system, l), kDot + kPlus);
  l.z = 3, l.rin = 1, l.rout = -2;  // radii 1, 0, -1: through zero it opens again
  EXPECT_EQ(Canvas(6, 6, 3).paint(init_taper_system, l), kPlus + kDot + kPlus);
}

// The squared radius is twice rin squared. Of two slices the first has the S-curve's start, exactly
// 0, and the second its middle, arctan(pi)/(pi/2) = 0.80.
TEST(Splitter, DiscFollowsTheCurveFromTheCentre) {
  struct_layer l = {
      .z = 2, .rin = 0.5, .rout = 1.5};  // radii 0.5 and 1, times the square root of 2
  EXPECT_EQ(Canvas(6, 6, 2).paint(init_splitter_system, l), kDot + kBlock);
  l.rin = l.rout = 0.75;  // 2 * 0.5625: neighbours at 1.005 lie inside, diagonals outside
  l.wx = 1.25, l.wy = -1.25;
  EXPECT_EQ(Canvas(6, 6, 2).paint(init_splitter_system, l), kPlus + kPlusAside);
}

// Radius 3, slices at a distance of 0 to 3 from the centre plane: squared radii 9, 8, 5 and 0.
TEST(Lens, IsASphereThatTouchesTheEndOfItsStretch) {
  const std::string nine = "...#.. .##### .##### ###### .##### .##### ";
  const std::string eight = "...... .##### .##### .##### .##### .##### ";
  const std::string five = "...... ..###. .##### .##### .##### ..###. ";
  struct_layer l = {.x = 2, .y = 2, .z = 4, .r = 3};  // a lens reads neither x nor y
  EXPECT_EQ(Canvas(6, 6, 4).paint(init_lens_system, l), nine + eight + five + kDot);
  EXPECT_EQ(Canvas(6, 6, 2).paint(init_lens_system, l), five + kDot);  // the cut moves the vertex
  l.r = -3;
  EXPECT_EQ(Canvas(6, 6, 4).paint(init_lens_system, l), kDot + five + eight + nine);
  l.z = 2, l.r = -1, l.dx = 1, l.dy = -1, l.dz = -1;  // centre at slice 1, moved to slice 0
  EXPECT_EQ(Canvas(6, 6, 1).paint(init_lens_system, l), kPlusAside);
}

}  // namespace
