// The fast propagator against the reference.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>

#include "support/scene.h"
#include "wpm/axis.h"
#include "wpm/health.h"
#include "wpm/loops.h"
#include "wpm/repeated_addition.h"
#include "wpm/threads.h"

namespace {

// Two materials in shapes that change from slice to slice, so pairs recur.
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

// The two differ by round-off alone: a few thousand terms of a few units in the last place.
TEST_P(FastScene, FastEqualsReference) {
  Scene reference = GetParam().make();
  reference.propagate();
  for (const int threads : {1, 3}) {
    wpm::set_threads(threads);
    Scene fast = GetParam().make();
    fast.propagate_by(make_fast_stepper);
    wpm::set_threads(1);
    for (int k = 0; k < fast.nz; ++k) {
      EXPECT_LE(difference(reference, fast, k).field, 1e-13) << "slice " << k;
      EXPECT_LE(difference(reference, fast, k).flux, 1e-13) << "slice " << k;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Every, FastScene, testing::ValuesIn(scene_table()),
                         [](const auto& named) { return named.param.name; });

// Without the correction of two pi in the axes, the error is 1e-7 of the field here. A hundred
// slices must leave 1e-11, round-off included.
TEST(Fast, StaysWithTheReferenceForAHundredSlices) {
  for (const auto& [nx, ny] : {std::pair(24, 24), std::pair(21, 21), std::pair(20, 28)}) {
    Scene reference = random_stack(nx, ny, 101, 7);
    Scene fast = reference;
    reference.propagate();
    fast.propagate_by(make_fast_stepper);
    const SliceDifference last = difference(reference, fast, 100);
    EXPECT_LE(last.field, 1e-11) << nx << " x " << ny;
    EXPECT_LE(last.flux, 1e-11) << nx << " x " << ny;
    EXPECT_GT(fast.power(100), 0.0);
  }
}

bool is_same(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

// The last bits show which sum a run took: the direct sum has the reference's. Transforms need
// several plane waves and few pairs of indices. Amplitudes and gains must be well within single
// precision. The direct sum takes the rest, infinities and NaN included.
TEST(Fast, TakesTransformsWhereTheyServeAndElseTheDirectSum) {
  struct Case {
    const char* what;
    double amplitude;
    cpx n;  // of one sample
    bool is_direct;
    double fall = 1e12;  // of the beam, 1/m^2
    double turns = 0;    // in y over the slice
  };
  for (const Case& c :
       {Case{"tame", 1.0, 1.2, false}, Case{"large", 1e12, 1.2, false},
        Case{"enormous", 1e20, 1.2, true}, Case{"index 0", 1.0, 0.0, true},
        Case{"infinite index", 1.0, HUGE_VAL, true}, Case{"gain of e^27", 1.0, {1.2, -17.2}, false},
        Case{"gain of e^46", 1.0, {1.2, -29.3}, true},
        Case{"gain of e^3141", 1.0, {1.2, -2e3}, true},
        Case{"a single plane wave", 1.0, 1.2, true, 0.0},
        Case{"an enormous one among faint ones", 1e20, 1.2, true, 0.0, 1.0}}) {
    SCOPED_TRACE(c.what);
    Scene reference(8, 8, 2, 0.3e-6, 0.35e-6, 0.25e-6, 1e-6);
    reference.illuminate([&](double x, double y) {
      const double phase = c.turns * 2 * M_PI * y / (8 * 0.35e-6);
      return std::polar(c.amplitude * std::exp(-c.fall * (x * x + 2 * y * y)), phase);
    });
    reference.N[reference.index(1, 3, 5)] = c.n;
    Scene fast = reference;
    reference.propagate();
    fast.propagate_by(make_fast_stepper);
    bool is_same_throughout = true;
    for (std::size_t s = 0; s < fast.E.size(); ++s)
      is_same_throughout = is_same_throughout && is_same(fast.F[s], reference.F[s]) &&
                           is_same(fast.E[s].real(), reference.E[s].real()) &&
                           is_same(fast.E[s].imag(), reference.E[s].imag());
    EXPECT_EQ(is_same_throughout, c.is_direct);
    EXPECT_TRUE(c.is_direct || difference(reference, fast, 1).field <= 1e-13);
  }
}

// A NaN in one sample is NaN everywhere after one step, as by the direct sum but without its work.
TEST(Fast, NeedsNoSumWhereEverythingIsNaN) {
  Scene reference = random_stack(20, 14, 5, 7);
  reference.E[reference.index(0, 3, 5)] = NAN;
  reference.N[reference.index(3, 2, 2)] = 0.0;
  Scene fast = reference;
  reference.propagate();
  const PropagationTotals counts = fast.propagate_by(make_fast_stepper);
  EXPECT_EQ(counts.known, 4);
  EXPECT_EQ(counts.direct, 0);
  for (std::size_t s = fast.grid().plane(); s < fast.E.size(); ++s) {
    EXPECT_EQ(std::isnan(fast.E[s].real()), std::isnan(reference.E[s].real())) << s;
    EXPECT_EQ(std::signbit(fast.E[s].real()), std::signbit(reference.E[s].real())) << s;
    EXPECT_EQ(std::isnan(fast.E[s].imag()), std::isnan(reference.E[s].imag())) << s;
    EXPECT_EQ(std::isnan(fast.F[s]), std::isnan(reference.F[s])) << s;
    EXPECT_EQ(std::signbit(fast.F[s]), std::signbit(reference.F[s])) << s;
  }
}

// The modulus of a raw transform value decides, however near it is to the cut-off of 1e-4. One
// value that does not fit single precision is found at any place.
TEST(Fast, JudgesPlaneWavesByTheirModulus) {
  constexpr int kValues = 401;
  std::vector<cpx> S;
  for (int a = 0; a < kValues; ++a) S.push_back(std::polar(1e-4, 0.7 * a));
  std::vector<cpx> f(kValues);
  const wpm::Taken taken = wpm::take_amplitudes(kValues, S.data(), 0.25, f.data());
  std::size_t kept = 0;
  for (std::size_t a = 0; a < kValues; ++a) {
    EXPECT_EQ(f[a], std::abs(S[a]) < 1e-4 ? 0.0 : 0.25 * S[a]) << a;
    kept += std::abs(S[a]) < 1e-4 ? 0 : 1;
  }
  EXPECT_EQ(taken.kept, kept);
  EXPECT_TRUE(kept > 20 && kept < kValues - 20) << "rounding leaves them on both sides: " << kept;
  EXPECT_TRUE(taken.is_tame);
  for (const double wild : {1e20, HUGE_VAL, std::nan("")})
    for (std::size_t place = 0; place < 7; ++place) {
      std::vector<cpx> one(7, 1.0);
      one[place] = {0.0, wild};
      EXPECT_FALSE(wpm::take_amplitudes(7, one.data(), 0.25, f.data()).is_tame) << wild << place;
    }
}

// Transforms need regular axes.
TEST(Fast, TakesOnlyRegularAxesForTransforms) {
  const Scene scene(9, 8, 2, 0.3e-6, 0.35e-6, 0.25e-6, 1e-6);
  EXPECT_TRUE(wpm::is_regular(scene.KX.data(), scene.X.data(), 9));
  EXPECT_TRUE(wpm::is_regular(scene.KY.data(), scene.Y.data(), 8));
  std::vector<double> stretched = scene.X;
  stretched[3] *= 1.001;
  EXPECT_FALSE(wpm::is_regular(scene.KX.data(), stretched.data(), 9));
  const std::vector<double> zeros(9);
  EXPECT_FALSE(wpm::is_regular(scene.KX.data(), zeros.data(), 9));

  // A grid of zero width has no regular axes: the bits are the direct sum's.
  Scene flat(8, 6, 3, 0.0, 0.3e-6, 0.25e-6, 1e-6);
  Scene fast = flat;
  EXPECT_EQ(flat.propagate_by(make_direct_stepper).direct, 2);
  EXPECT_EQ(fast.propagate_by(make_fast_stepper).direct, 2);
  EXPECT_EQ(std::memcmp(flat.E.data(), fast.E.data(), flat.E.size() * sizeof(cpx)), 0);
}

// The cheaper sum: transforms for many plane waves, the direct sum for a single one.
TEST(Fast, TakesTheCheaperSum) {
  Scene guide = random_stack(24, 24, 4, 7);
  const PropagationTotals many = guide.propagate_by(make_fast_stepper);
  EXPECT_EQ(many.transforms, 3);
  EXPECT_EQ(many.direct, 0);
  Scene straight_on(16, 16, 3, 0.3e-6, 0.2e-6, 0.25e-6, 1e-6);
  const PropagationTotals single = straight_on.propagate_by(make_fast_stepper);
  EXPECT_EQ(single.transforms, 0);
  EXPECT_EQ(single.direct, 2);
}

// Pairs are found once for each uniform segment.
TEST(Fast, KnowsAUniformSegmentByItsNumber) {
  Scene scene = random_stack(16, 12, 3, 3);
  const auto stepper = make_fast_stepper(scene.grid(), scene.options());
  const std::size_t plane = scene.grid().plane();
  const auto stepped = [&](const cpx* N, int segment) {
    std::vector<cpx> E(plane);
    std::vector<double> F(plane);
    step(*stepper, {scene.E.data(), scene.F.data(), N, segment}, {E.data(), F.data(), N, segment});
    return E;
  };
  const cpx* first = scene.N.data();
  const cpx* second = first + plane;
  const std::vector<cpx> of_first = stepped(first, 4);
  EXPECT_EQ(stepped(first, 4), of_first);
  EXPECT_EQ(stepped(second, 5), stepped(second, -1));
  EXPECT_NE(stepped(second, 5), of_first);
}

// The reported flux is the sum of F to the bit, because whole volumes have F alone.
TEST(Fast, ReportsTheFluxAndTheStateOfItsSlice) {
  for (const auto& [nx, ny] : {std::pair(40, 40), std::pair(21, 28)}) {
    Scene scene = random_stack(nx, ny, 6, 11);
    const std::size_t plane = scene.grid().plane();
    const auto stepper = make_fast_stepper(scene.grid(), scene.options());
    const auto slice = [&](int k) -> Slice {
      const std::size_t first = static_cast<std::size_t>(k) * plane;
      return {&scene.E[first], &scene.F[first], &scene.N[first]};
    };
    for (int k = 1; k < scene.nz; ++k) {
      const Slice made = slice(k);
      const StepResult result = step(*stepper, slice(k - 1), made);
      ASSERT_TRUE(result.flux && result.state) << k;
      EXPECT_EQ(*result.flux, std::accumulate(made.F, made.F + plane, 0.0)) << k;
      EXPECT_NE(*result.flux, 0.0);
      EXPECT_EQ(*result.state, FieldState::kLight) << k;
    }
    // The direct sum reports neither.
    scene.E[4 * plane] = std::nan("");
    const StepResult unknown = step(*stepper, slice(4), slice(5));
    EXPECT_FALSE(unknown.flux || unknown.state);
    // An index without a propagating wave leaves no field.
    Scene dark(24, 24, 2, 0.3e-6, 0.2e-6, 40e-6, 1e-6);
    for (std::size_t s = 0; s < dark.N.size(); ++s) dark.N[s] = cpx(s % 24 < 9 ? 1.5 : 1.4, 9.0);
    dark.illuminate([](double x, double y) { return std::exp(-(x * x + 2 * y * y) / 1e-12); });
    const auto last = make_fast_stepper(dark.grid(), dark.options());
    const StepResult lost = step(*last, {dark.E.data(), dark.F.data(), dark.N.data()},
                                 {&dark.E[576], &dark.F[576], &dark.N[576]});
    EXPECT_TRUE(lost.state == FieldState::kDark);
  }
}

TEST(FieldStates, SeesOneSampleAmongAll) {
  const double inf = std::numeric_limits<double>::infinity(), tiny = 5e-324, large = 1.7e308;
  for (const std::size_t n : {1, 7, 16, 33})
    for (std::size_t at = 0; at < n; ++at) {
      std::vector<cpx> E(n, cpx(0.0, -0.0));
      EXPECT_EQ(field_state(E.data(), n), FieldState::kDark);
      for (const cpx& light : {cpx(0, tiny), cpx(-tiny, 0), cpx(large, 0), cpx(0, -large)}) {
        E[at] = light;
        EXPECT_EQ(field_state(E.data(), n), FieldState::kLight);
      }
      for (const cpx& wild :
           {cpx(0, inf), cpx(-inf, 0), cpx(std::nan(""), 1), cpx(1, -std::nan(""))}) {
        E[at] = wild;
        EXPECT_EQ(field_state(E.data(), n), FieldState::kNotFinite);
      }
    }
}

// Terms between two numbers of the sum, also half way; without effect; over many powers of two; and
// none of these.
TEST(Sums, OfTheSameTermHaveTheBitsOfTheLoop) {
  std::mt19937_64 generator(5);
  std::uniform_real_distribution<double> spread(1.0, 2.0);
  const auto expect_same = [](double sum, double term, std::uint64_t count) {
    double looped = sum;
    for (std::uint64_t i = 0; i < count; ++i) looped += term;
    const double added = wpm::add_repeatedly(sum, term, count);
    EXPECT_TRUE(std::memcmp(&added, &looped, sizeof added) == 0)
        << sum << " + " << count << " * " << term << ": " << added << " is not " << looped;
  };
  for (int trial = 0; trial < 4000; ++trial) {
    const double sum = std::ldexp(spread(generator), trial % 61 - 30);
    // The last bits of term are in and about the last place of the sum.
    const double units = static_cast<double>(generator() % 4096) / (trial % 3 == 0 ? 4.0 : 8.0);
    expect_same(sum, std::ldexp(units, trial % 61 - 30 - 52), generator() % 3000);
    expect_same(trial % 7 == 0 ? 0.0 : sum, std::ldexp(spread(generator), trial % 37 - 20), 3000);
  }
  const double inf = std::numeric_limits<double>::infinity(), large = 1.7e308, tiny = 5e-324;
  for (const double sum : {0.0, -0.0, 1.0, -3.0, tiny, 1e-308, large, inf, -inf, std::nan("")})
    for (const double term : {0.0, -0.0, 1.0, -0.1, 0.1, tiny, 1e-308, 1e290, large, inf})
      for (const int count : {0, 1, 2, 3, 100}) expect_same(sum, term, count);
}

}  // namespace
