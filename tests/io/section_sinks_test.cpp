// Output slice by slice equals that of a whole volume.
#include <gtest/gtest.h>

#include <cmath>

#include "io/observing.h"
#include "wpm/byte_stream.h"

namespace {

struct Volume {
  explicit Volume(int side, int slices) {
    grid.nx = grid.ny = side;
    grid.nz = slices;
    for (std::size_t i = 0; i < grid.voxels(); ++i) {
      const auto x = static_cast<double>(i);
      E.emplace_back(std::sin(x), 7.0);
      F.push_back(std::exp(0.3 * x) - 2.0);
      N.emplace_back(1.0 + x, -3.0);
    }
  }
  Slice slice(int k) {
    const std::size_t first = static_cast<std::size_t>(k) * grid.plane();
    return {&E[first], &F[first], &N[first]};
  }

  Grid grid;
  std::vector<cpx> E, N;
  std::vector<double> F;
};

// Passes all slices, or those from `first` on, to a sink.
void march_through(Sink& sink, Volume& volume, int first = 0) {
  for (int k = first; k < volume.grid.nz; ++k)
    show(sink, k, volume.slice(k), volume.grid.nx, volume.grid.ny);
  sink.finish();
}

struct Section {
  plane p;
  int s;
};

// Planes of every kind: inside, at the edges and far outside. A plane number has no bound.
std::vector<Section> sections() {
  std::vector<Section> all = {{XY, -1}, {plane(9), 2}, {YX, 1}, {ZX, 1}, {ZY, 1}};
  for (const plane p : {XY, XZ, YZ})
    for (const int s : {0, 3, 4, 7, 8, 18, 32, 2147483647, -2, -5, -17, -2147483647 - 1})
      all.push_back({p, s});
  return all;
}

class WholeSections : public testing::TestWithParam<int> {};

TEST_P(WholeSections, AreThoseOfTheWholeVolume) {
  const TempDir directory;
  const auto name = [&](const char* file) { return directory.path(file).string(); };
  Volume volume(4, GetParam());
  const Grid& grid = volume.grid;
  for (const auto& [p, s] : sections()) {
    SCOPED_TRACE(testing::Message() << "plane " << p << " number " << s);
    ASSERT_TRUE(can_stream(p, s, grid));
    store_array(volume.E.data(), grid.nz, 4, 4, name("E"), p, s);
    store_array(volume.F.data(), grid.nz, 4, 4, name("F"), p, s);
    store_array(volume.N.data(), grid.nz, 4, 4, name("N"), p, s);
    const std::pair<Quantity, const char*> kQuantities[] = {
        {Quantity::kField, "E"}, {Quantity::kFlux, "F"}, {Quantity::kIndex, "N"}};
    for (const auto& [quantity, whole] : kQuantities) {
      march_through(*make_cross_section_sink(name("a"), quantity, p, s, grid), volume);
      EXPECT_EQ(directory.read("a"), directory.read(whole)) << whole;
    }
    store_slices([&](int k) { return volume.slice(k).N; }, grid, name("a"), p, s);
    EXPECT_EQ(directory.read("a"), directory.read("N"));
  }
}

INSTANTIATE_TEST_SUITE_P(Slices, WholeSections, testing::Values(1, 2, 6));

// The incident field has a first slice only. No other is required.
TEST(Sections, OfOneSliceAreZeroBeyondIt) {
  const TempDir directory;
  Volume volume(3, 4);
  store_slices([&](int k) -> const double* { return k == 0 ? volume.F.data() : nullptr; },
               volume.grid, directory.path("a").string(), XZ, 1);
  std::fill(volume.F.begin() + 9, volume.F.end(), 0.0);
  store_array(volume.F.data(), 4, 3, 3, directory.path("b").string(), XZ, 1);
  EXPECT_EQ(directory.read("a"), directory.read("b"));
  int asked = 0;
  store_slices([&](int k) -> const double* { return asked += 10 + k, nullptr; }, volume.grid,
               directory.path("a").string(), XY, 2);
  EXPECT_EQ(asked, 12);
}

// The run stops after any slice, and another process's sink resumes. The file still has what the
// first sink wrote after its state.
TEST(Sections, GoOnBehindAnySlice) {
  const TempDir directory;
  const std::string whole = directory.path("whole").string(), a = directory.path("a").string();
  Volume volume(4, 6);
  const auto expect_same = [&](auto make) {
    march_through(*make(whole), volume);
    for (int stop = 0; stop < 6; ++stop) {
      const auto first = make(a), second = make(a);
      for (int k = 0; k <= stop; ++k) show(*first, k, volume.slice(k), 4, 4);
      const SinkState state = first->save();
      if (stop < 5) first->take(stop + 1, volume.slice(5));
      first->finish();
      second->restore(state);
      march_through(*second, volume, stop + 1);
      EXPECT_EQ(directory.read("a"), directory.read("whole")) << stop;
    }
  };
  for (const auto& [p, s] : sections())
    if (std::abs(s % 100) < 20)
      expect_same([&, p = p, s = s](const std::string& file) {
        return make_cross_section_sink(file, Quantity::kField, p, s, volume.grid);
      });
  expect_same([&](const std::string& file) { return make_flux_profile_sink(file); });
  EXPECT_THROW(make_flux_profile_sink(a)->restore("bad"), TooFewBytes);
}

TEST(Sections, ThatNeedAVolumeAreNotStreamed) {
  Grid grid = Volume(4, 6).grid;
  EXPECT_FALSE(can_stream(XZ, -1, grid) || can_stream(ZY, -1, grid));
  grid.ny = 5;
  EXPECT_FALSE(can_stream(XY, 0, grid));
  grid.ny = 4;
  grid.nz = 0;  // a file without slices
  EXPECT_FALSE(can_stream(XY, 0, grid));
}

TEST(FluxProfile, IsTheFluxOfEachSliceOverThatOfTheFirst) {
  const TempDir directory;
  Volume volume(2, 3);
  volume.F = {1, 2, 3, 4, 5, 5, 5, 5, -1, 0, 0, NAN};
  const auto sink = make_flux_profile_sink(directory.path("a").string());
  march_through(*sink, volume);
  EXPECT_EQ(sink->flux0(), 10.0);
  EXPECT_EQ(directory.read("a"), "\n1,2,nan\n");
  EXPECT_EQ(store_flux_profile(volume.F.data(), volume.grid, directory.path("b").string()), 10.0);
  EXPECT_EQ(directory.read("b"), directory.read("a"));
  volume.grid.nz = 0;
  store_flux_profile(nullptr, volume.grid, directory.path("b").string());
  EXPECT_EQ(directory.read("b"), "\n\n");
}

}  // namespace
