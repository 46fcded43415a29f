// The propagator against plain nested loops, and its edge cases.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "support/plain_nest.h"
#include "support/scene.h"
#include "wpm/threads.h"

namespace {

template <typename T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

class Threads {
 public:
  explicit Threads(int count) { wpm::set_threads(count); }
  ~Threads() { wpm::set_threads(1); }
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;
};

class ReferenceScene : public testing::TestWithParam<NamedScene> {};

// Equality, not tolerance: neither optimisations nor the number of threads may change a bit.
TEST_P(ReferenceScene, EqualsThePlainNestForAnyNumberOfThreads) {
  Scene expected = GetParam().make();
  expected.propagate(plain_nest_3D);
  for (const int threads : {1, 2, 3, 7}) {
    const Threads scope(threads);
    Scene scene = GetParam().make();
    scene.propagate();
    EXPECT_TRUE(same_bits(scene.E, expected.E)) << threads << " threads";
    EXPECT_TRUE(same_bits(scene.F, expected.F)) << threads << " threads";
    scene.propagate_by(make_direct_stepper);
    EXPECT_TRUE(same_bits(scene.E, expected.E)) << threads << " threads, in steps";
    EXPECT_TRUE(same_bits(scene.F, expected.F)) << threads << " threads, in steps";
  }
}

INSTANTIATE_TEST_SUITE_P(Every, ReferenceScene, testing::ValuesIn(scene_table()),
                         [](const auto& named) { return named.param.name; });

TEST(Propagator, CarriesTheStrangeBitForBitToo) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  struct Strange {
    const char* what;
    cpx field, n;
  };
  for (const Strange& strange :
       {Strange{"index 0", 1.0, 0.0}, Strange{"infinite field", inf, 1.0},
        Strange{"NaN field", nan, 1.0}, Strange{"NaN index", 1.0, nan},
        Strange{"infinite index", 1.0, inf}, Strange{"enormous gain", 1.0, {1.0, -1e9}},
        // e^709.95 is infinite; its products with sines and cosines of both parts often are not.
        Strange{"gain at the exponential's end", 1.0, {1.0, -709.95 / (6.2831853 * 0.25)}},
        Strange{"enormous loss", 1.0, {1.0, 1e9}}, Strange{"negative index", 1.0, -1.5}}) {
    const auto make = [&] {
      Scene scene(4, 4, 3, 0.3e-6, 0.3e-6, 0.25e-6, 1e-6);
      scene.illuminate([&](double x, double) { return x == 0.0 ? strange.field : cpx(1.0); });
      scene.N[scene.index(1, 2, 1)] = strange.n;
      return scene;
    };
    Scene expected = make();
    expected.propagate(plain_nest_3D);
    Scene scene = make();
    scene.propagate();
    // The sign of a NaN is undefined: compare only the bits of numbers.
    for (std::size_t s = 0; s < scene.E.size(); ++s) {
      for (const auto& [a, b] : {std::pair(scene.E[s].real(), expected.E[s].real()),
                                 std::pair(scene.E[s].imag(), expected.E[s].imag()),
                                 std::pair(scene.F[s], expected.F[s])})
        EXPECT_TRUE((std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0)
            << strange.what << " sample " << s << ": " << a << " and " << b;
    }
  }
}

TEST(Propagator, LeavesSingleSlicesAndDarknessAlone) {
  Scene single(8, 8, 1, 1e-6, 1e-6, 1e-6, 1e-6);
  single.propagate();
  EXPECT_EQ(single.at(0, 3, 3), cpx(1.0));

  // A raw coefficient is the sum over 64 samples. A modulus under 0.0001 is dropped.
  for (const auto& [raw, is_lost] : {std::pair(cpx(0.99e-4), true),
                                     {1.01e-4, false},
                                     {{0.7e-4, -0.7e-4}, true},
                                     {{-0.72e-4, 0.7e-4}, false}})
    for (const auto propagator : {zerith_3D, plain_nest_3D}) {
      Scene faint(8, 8, 2, 1e-6, 1e-6, 1e-6, 1e-6);
      faint.illuminate([&](double, double) { return raw / 64.0; });
      faint.propagate(propagator);
      EXPECT_EQ(faint.power(1) == 0.0, is_lost) << raw;
      EXPECT_EQ(faint.flux(1) == 0.0, is_lost) << raw;
    }
}

// An index of 0 makes kz NaN for every plane wave except frequency zero. Its kz of 0 counts as
// evanescent.
TEST(Propagator, VerticalIncidenceAloneEscapesAnIndexOfZero) {
  Scene scene(8, 8, 2, 0.5e-6, 0.5e-6, 0.5e-6, 1e-6);
  scene.fill(0, 2, 0.0);
  scene.propagate();
  EXPECT_EQ(scene.at(1, 4, 4), cpx(1.0));  // evanescent: its amplitude stays, without a phase
  EXPECT_EQ(scene.flux(1), 0.0);
  scene.illuminate([](double x, double) { return x < 0 ? 1.0 : 0.0; });
  scene.propagate();
  EXPECT_TRUE(std::isnan(scene.at(1, 4, 4).real()));
}

}  // namespace
