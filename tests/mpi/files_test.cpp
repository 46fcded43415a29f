// The files of several ranks against those of one process.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>

#include "data/dataset.h"
#include "ranks.h"

namespace {

constexpr const char* kMonitors =
    "[monitor]\ntype = field\nfile = all.h5\nsave = E, flux, index\n[/monitor]\n"
    "[monitor]\ntype = field\nfile = box.h5\ny1 = -1\ny2 = 1.5\nevery = 3\nsave = intensity\n"
    "[/monitor]\n"
    "[monitor]\ntype = beam\nfile = beam.csv\nr = 1.5\n[/monitor]\n"
    "[monitor]\ntype = overlap\nfile = overlap.csv\nmode = gaussian\nwaist = 1.5\n[/monitor]\n"
    "[monitor]\ntype = overlap\nfile = input.csv\nmode = input\nz1 = 2\n[/monitor]\n"
    "[monitor]\ntype = focus\nfile = focus.csv\nx1 = -2\nx2 = 2\n[/monitor]\n";

// Every component, none first, on samples of different spacings; a wave off the axis.
std::string scene(int side, const std::string& layers, const std::string& global = "") {
  return "[global]\nscale = um\npolarization = tm\nx = 8\ny = 6\nz = 6\nnx = " +
         std::to_string(side) + "\nny = " + std::to_string(side) + "\nnz = 16\n" + global +
         "[/global]\n[wave]\nshape = gaussian\nlambda = 1\namp = 20\nsigmax = 1.5\nsigmay = 1.2\n"
         "theta = 10\n[/wave]\n[layer]\nz = 1\nn = 1.1\n[/layer]\n" +
         layers + "[layer]\nz = 6\nn = 1\n[/layer]\n" + kMonitors;
}

std::string layer(const std::string& keys) {
  return "[layer]\n" + keys + "\n[/layer]\n";
}

struct Component {
  const char* name;
  std::string layers;
};

const Component kComponents[] = {
    {"Grating",
     layer("type = grating\nz = 2\npx = 4\nwx = 1\npy = 3\nwy = 0.5\nn = 1.5\nne = 1.2")},
    {"Guide", layer("type = waveguide\nz = 3\nr = 1.2\nn = 1.5\nne = 1.4\ntiltx = 8\nlevels = 4")},
    {"Taper", layer("type = taper\nz = 3\nrin = 2\nrout = 0.7\nn = 1.5\nne = 1.4\nke = 0.01")},
    {"Splitter", layer("type = splitter\nz = 4\nrin = 0.8\nwx = 1\nn = 1.5\nne = 1.45")},
    {"Lens", layer("type = lens\nz = 1.5\nr = -4\nn = 1.5\nne = 1\nlevels = 3")},
    {"GradedRod", layer("type = grin\nz = 3\nn = 1.5\ng = 0.2\nr = 2.5\nne = 1.3\nlevels = 9")},
    {"ScreenAndGuide", layer("type = screen\nr = 1.7\nlevels = 8") +
                           layer("type = waveguide\nz = 3\nr = 1\nn = 1.5\nne = 1.4")},
    {"IndexFile", layer("type = file\nfile = n.h5\ndataset = index\nlevels = 5")},
};

void PrintTo(const Component& component, std::ostream* out) {
  *out << component.name;
}

// The bound is relative to the largest value, or to least if that is larger. A length near 0 is
// round-off.
void expect_near(const std::vector<double>& a, const std::vector<double>& b, double bound,
                 const std::string& what, double least = 0) {
  ASSERT_EQ(a.size(), b.size()) << what;
  double largest = least;
  for (const double value : a)
    if (std::isfinite(value)) largest = std::max(largest, std::fabs(value));
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::isnan(a[i]) && std::isnan(b[i])) continue;
    ASSERT_LE(std::fabs(a[i] - b[i]), bound * largest) << what << " at " << i;
  }
}

std::vector<double> numbers(const TempDir& folder, const char* file, const char* name) {
  const data::Dataset set(folder.path(file).string(), name,
                          std::string(name) == "E" ? data::Layout::kField : data::Layout::kVolume,
                          "test");
  const auto parts = static_cast<std::size_t>(set.is_complex() ? 2 : 1);
  std::vector<double> values(parts * static_cast<std::size_t>(set.slices()) *
                             static_cast<std::size_t>(set.rows()) *
                             static_cast<std::size_t>(set.columns()));
  set.read(0, set.slices(), values.data());
  return values;
}

// Fields to 1e-13 of their largest value: transforms in another order differ by round-off. Columns
// of tables are compared one by one. Their figures are sums and quotients of fields. The angle or
// phase of almost nothing is arbitrary.
void expect_same_files(const TempDir& one, const TempDir& many) {
  for (const char* name : {"E", "flux", "index"})
    expect_near(numbers(one, "all.h5", name), numbers(many, "all.h5", name), 1e-13, name);
  expect_near(numbers(one, "box.h5", "intensity"), numbers(many, "box.h5", "intensity"), 1e-13,
              "intensity");
  for (const auto& entry : std::filesystem::directory_iterator(one.path())) {
    const std::string name = entry.path().filename();
    EXPECT_TRUE(many.has(name)) << name;
    if (!name.ends_with(".csv")) continue;
    const auto a = csv_rows(one.read(name));
    const auto b = csv_rows(many.read(name));
    ASSERT_EQ(a.size(), b.size()) << name;
    std::vector<std::vector<double>> columns[2];
    for (std::size_t row = 0; row < a.size(); ++row) {
      ASSERT_EQ(a[row].size(), b[row].size()) << name;
      for (std::size_t c = 0; c < a[row].size(); ++c)
        for (const bool second : {false, true}) {
          columns[second].resize(std::max(columns[second].size(), c + 1));
          columns[second][c].push_back((second ? b : a)[row][c]);
        }
    }
    // Cross-sections have six digits. One may differ by a rounding.
    const bool is_ours = name.find("cpu") == std::string::npos;
    for (std::size_t c = 0; c < columns[0].size(); ++c)
      expect_near(columns[0][c], columns[1][c], is_ours ? 1e-9 : 1e-5,
                  name + " column " + std::to_string(c), is_ours ? 1.0 : 0.0);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(one.path()), {}),
            std::distance(std::filesystem::directory_iterator(many.path()), {}));
}

class EveryComponent : public testing::TestWithParam<Component> {};

TEST_P(EveryComponent, HasTheFilesOfOneProcess) {
  const std::string text =
      scene(34, GetParam().layers, std::string(GetParam().name) == "Taper" ? "edge = 1\n" : "");
  const std::string options = "-i a.cfg -p --fast -x 1 -l 7";
  TempDir one;
  one.write("a.cfg", text);
  const bool needs_file = std::string(GetParam().name) == "IndexFile";
  if (needs_file) {
    TempDir maker;
    maker.write("a.cfg", scene(34, kComponents[4].layers));
    ASSERT_EQ(run_zerith(maker, {"-q", "-i", "a.cfg", "-p", "--fast"}).status, 0);
    std::filesystem::copy_file(maker.path("all.h5"), one.path("n.h5"));
  }
  const RunResult alone = run_shell(one, "\"$ZERITH\" " + options);
  ASSERT_EQ(alone.status, 0) << alone.err;
  for (const int ranks : {1, 2, 3, 5}) {
    SCOPED_TRACE(ranks);
    TempDir many;
    many.write("a.cfg", text);
    if (needs_file) std::filesystem::copy_file(one.path("n.h5"), many.path("n.h5"));
    const RunResult run = run_ranks(many, ranks, options);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(without_times(run.out), without_times(alone.out));
    EXPECT_EQ(run.err, alone.err);
    expect_same_files(one, many);
  }
}

INSTANTIATE_TEST_SUITE_P(Ranks, EveryComponent, testing::ValuesIn(kComponents),
                         [](const auto& named) { return std::string(named.param.name); });

void expect_alike(const std::string& text, int ranks, const std::string& options) {
  SCOPED_TRACE(options + ", " + std::to_string(ranks) + " ranks");
  TempDir one;
  TempDir many;
  one.write("a.cfg", text);
  many.write("a.cfg", text);
  ASSERT_EQ(run_shell(one, "\"$ZERITH\" -q -i a.cfg -p " + options).status, 0);
  std::filesystem::copy_file(one.path("wisdom3.txt"), many.path("wisdom3.txt"));
  const RunResult run = run_ranks(many, ranks, "-q -i a.cfg -p " + options);
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  expect_same_files(one, many);
  // The wisdom is that of the same planner, with more plans. It has no exchanges between ranks:
  // their planner is another one.
  const std::string wisdom = many.read("wisdom3.txt");
  std::istringstream lines(one.read("wisdom3.txt"));
  for (std::string line; std::getline(lines, line);)
    EXPECT_NE(wisdom.find(line), std::string::npos) << line;
}

// Every plane that a stream can save, and odd sizes, whose last frequency shares a place.
TEST(Ranks, SaveAnyPlane) {
  const std::string guide = kComponents[1].layers;
  expect_alike(scene(25, guide), 2, "--fast -x 2 -l 3 -r record");
  expect_alike(scene(25, guide), 4, "--fast -l -1");
  expect_alike(scene(25, guide, "hfield = 1\n"), 3, "--fast -x 1 -l 200 --threads 2");
}

// If no monitor needs the rest, only a plane's own rows come to the first rank.
TEST(Ranks, BringTogetherWhatAPlaneShows) {
  std::string text = scene(30, kComponents[1].layers);
  text.erase(text.find("[monitor]"));
  for (const std::string options : {"--fast -x 1 -l 7", "--fast -x 2 -l 3", "--fast -l 9"}) {
    TempDir one;
    TempDir many;
    one.write("a.cfg", text);
    many.write("a.cfg", text);
    ASSERT_EQ(run_shell(one, "\"$ZERITH\" -q -i a.cfg -p " + options).status, 0);
    ASSERT_EQ(run_ranks(many, 3, "-q -i a.cfg -p " + options).status, 0);
    for (const char* name : {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv"})
      EXPECT_EQ(differing_values(one.read(name), many.read(name)), 0U) << options << name;
  }
}

// Ranks own rows in groups of eight. Five ranks own 8, 2 and then no rows; of eleven most own none.
TEST(Ranks, MayBeMoreThanGroupsOfRows) {
  expect_alike(scene(10, kComponents[5].layers), 5, "--fast");
  expect_alike(scene(10, kComponents[1].layers), 11, "--stream");
  expect_alike(scene(1, ""), 3, "--fast");
}

// The direct sum adds the same terms in the same order.
TEST(Ranks, DirectSumHasTheBitsOfOneProcess) {
  const std::string text = scene(17, kComponents[2].layers);
  expect_alike(text, 3, "--stream");
  TempDir one;
  TempDir many;
  one.write("a.cfg", text);
  many.write("a.cfg", text);
  ASSERT_EQ(run_shell(one, "\"$ZERITH\" -q -i a.cfg -p --stream").status, 0);
  std::filesystem::copy_file(one.path("wisdom3.txt"), many.path("wisdom3.txt"));
  ASSERT_EQ(run_ranks(many, 3, "-q -i a.cfg -p --stream").status, 0);
  EXPECT_EQ(numbers(one, "all.h5", "E"), numbers(many, "all.h5", "E"));
}

// Normal incidence is a single plane wave. The indices differ at nearly every sample: there the
// direct sum is cheaper for all ranks, and after it transforms are.
TEST(Ranks, ChooseTheCheaperSumTogether) {
  std::string text =
      scene(18, layer("type = grin\nz = 3\nn = 1.9\ng = 0.2\nr = 4.5\nne = 1\nlevels = 1000"));
  text.replace(text.find("gaussian"), 8, "plane");
  text.replace(text.find("theta = 10"), 10, "theta = 0");
  expect_alike(text, 3, "--fast");
  TempDir many;
  many.write("a.cfg", text);
  const RunResult run = run_ranks(many, 3, "-i a.cfg -p --fast --progress plain");
  EXPECT_NE(run.err.find(" by the direct sum"), std::string::npos) << run.err;
  EXPECT_EQ(run.err.find(" 0 by the direct sum"), std::string::npos) << run.err;
  EXPECT_EQ(run.err.find(" 0 by transforms"), std::string::npos) << run.err;
}

// The loss at the edge is the sum over all ranks, also in the beam table. A field that is lost on
// one rank is lost on all.
TEST(Ranks, SayOnceWhatBecameOfTheField) {
  TempDir many;
  many.write("a.cfg", scene(18, layer("z = 1\nn = 1\nk = -1e300")));
  const RunResult run = run_ranks(many, 3, "-i a.cfg -p --fast");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(count_of(run.err, "the field is not finite from slice"), 1) << run.err;
}

}  // namespace
