// Checks --check against the run itself: its memory, its sums and the places of its layers.
#include <gtest/gtest.h>

#include <cmath>
#include <regex>

#include "kernel/kernel.h"
#include "support/process.h"
#if ZERITH_HAS_HDF5
#include "data/hdf5_writer.h"
#endif

namespace {

struct Case {
  const char* name;
  int n, nz;
  const char* wave;
  const char* layer;
  const char* options;
};

constexpr const char* kFlat = "type = homog\nz = 24\nn = 1.5\n";
constexpr const char* kBall = "type = lens\nz = 24\nr = 12\nn = 1.5\nne = 1\nlevels = 16\n";
constexpr const char* kPlane = "shape = plane\namp = 1\n";
constexpr const char* kBeam = "shape = gaussian\nwaist = 5\namp = 1\n";

constexpr Case kCases[] = {
    {"volumes", 256, 40, kPlane, kFlat, "-p"},
    {"slices", 512, 4, kPlane, kFlat, "-p --stream"},
    {"fast_direct", 512, 4, kPlane, kFlat, "-p --fast"},
    {"fast", 480, 6, kBeam, kBall, "-p --fast"},
    {"device", 384, 3, kPlane, kFlat, "-g --stream"},
    {"device_fast", 384, 3, kPlane, kFlat, "-g --fast"},
#if ZERITH_HAS_HDF5
    {"index_file", 64, 24, kBeam, "type = file\nfile = in.h5\ndx = 0.4\ndy = 0.3\ndz = 1\n",
     "-p --fast"},
#endif
};

void write(const TempDir& directory, const Case& c) {
  directory.write("a.cfg",
                  "[global]\nscale = um\nmethod = wpm\npolarization = te\nx = 64\ny = 48\n"
                  "z = 24\nnx = " +
                      std::to_string(c.n) + "\nny = " + std::to_string(c.n) +
                      "\nnz = " + std::to_string(c.nz) + "\n[/global]\n[wave]\nlambda = 1\n" +
                      c.wave + "[/wave]\n[layer]\n" + c.layer + "[/layer]\n");
#if ZERITH_HAS_HDF5
  if (std::string(c.layer).find("in.h5") == std::string::npos) return;
  // 1.4 to 1.5 and back, other numbers in each slice.
  std::vector<double> indices;
  for (int k = 0; k < 24; ++k)
    for (int s = 0; s < 128 * 128; ++s)
      indices.push_back(1.45 + 0.05 * std::sin(1e-3 * s * (1 + 0.1 * k)));
  Hdf5Writer(directory.path("in.h5").string()).write("n", {24, 128, 128}, indices.data());
#endif
}

std::string line_of(const std::string& report, const std::string& name) {
  std::smatch found;
  const bool is_there =
      std::regex_search(report, found, std::regex("(^|\n)" + name + " +([^\n]*)"));
  return is_there ? found[2].str() : "";
}

class Check : public testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    write(directory_, GetParam());
    const std::string command = std::string("exec $ZERITH -i a.cfg ") + GetParam().options;
    check_ = run_shell(directory_, command + " --check");
    run_ = run_shell(directory_, command + " --progress plain");
    ASSERT_EQ(run_.status, 0) << run_.err;
  }
  TempDir directory_;
  RunResult check_, run_;
};

TEST_P(Check, EstimatesMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer itself takes memory";
#endif
  const bool is_on_device = std::string(GetParam().options).starts_with("-g");
  if (is_on_device && !is_host_standin()) GTEST_SKIP() << "the driver itself takes memory";
  std::smatch found;
  const std::string memory = line_of(check_.out, "memory");
  ASSERT_TRUE(std::regex_search(memory, found, std::regex("^([0-9.]+) (MB|GB)"))) << check_.out;
  const double estimate = std::stod(found[1]) * (found[2] == "MB" ? 1e6 : 1e9);
  EXPECT_LE(estimate, 1.5 * run_.peak_bytes);
  EXPECT_GE(estimate, run_.peak_bytes / 1.5);
}

TEST_P(Check, PlacesTheLayerAndNamesTheSumThatIsTaken) {
  const std::string last = std::to_string(GetParam().nz - 1);
  EXPECT_TRUE(line_of(check_.out, "layer 1").ends_with(", slices 0 to " + last)) << check_.out;
  std::smatch counts;
  if (!std::regex_search(run_.err, counts,
                         std::regex("([0-9]+) by transforms, ([0-9]+) by the direct sum"))) {
    EXPECT_EQ(std::string(GetParam().options).find("-p --"), std::string::npos) << run_.err;
    return;
  }
  const std::string expected = counts[2] == "0"   ? "transforms"
                               : counts[1] == "0" ? "direct sum"
                                                  : "transforms in " + counts[1].str() +
                                                        " steps, direct sum in " + counts[2].str();
  EXPECT_EQ(line_of(check_.out, "sum"), expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, Check, testing::ValuesIn(kCases),
                         [](const auto& c) { return c.param.name; });

}  // namespace
