// Runs that hold slices instead of volumes: the same bytes.
#include <gtest/gtest.h>

#include <sstream>

#include "support/process.h"

namespace {

// Every component, none of them first, on spacings that differ; a lossy core and a lens of either
// sign behind others.
std::string scene(const std::string& global = "") {
  return "[global]\nscale = um\npolarization = tm\nx = 6\ny = 5\nz = 7\nnx = 16\nny = 16\nnz = "
         "21\n" +
         global +
         "\n[/global]\n[wave]\nshape = gaussian\nlambda = 0.9\namp = 50\nsigmax = 2\nsigmay = 1.5\n"
         "theta = 7\nphi = 30\n[/wave]\n"
         "[layer]\nz = 0.5\nn = 1\n[/layer]\n"
         "[layer]\ntype = lens\nz = 1\nr = 4\nn = 1.5\nne = 1\n[/layer]\n"
         "[layer]\ntype = grating\nz = 1\npx = 3\npy = 2.5\nwx = 1\nwy = 0.7\nn = 1.4\nne = 1\n"
         "[/layer]\n"
         "[layer]\ntype = waveguide\nz = 1.5\nr = 1.3\nx = 0.3\nn = 1.5\nke = 0.01\nne = 1.4\n"
         "[/layer]\n"
         "[layer]\ntype = taper\nz = 1\nrin = 1\nrout = 2\nn = 1.5\nne = 1.4\n[/layer]\n"
         "[layer]\ntype = splitter\nz = 1\nrin = 0.7\nrout = 0.5\nwx = 1\nwy = 0.5\nn = 1.5\n"
         "ne = 1.4\n[/layer]\n"
         "[layer]\ntype = lens\nz = 1\nr = -3\nn = 1.6\nk = 0.001\nne = 1\n[/layer]\n";
}

constexpr const char* kInputs[] = {"N_sys.csv", "E_inp.csv", "F_inp.csv"};

std::vector<std::string> result_names(const std::string& device) {
  return {"E_" + device + ".csv", "EFlux_" + device + ".csv", "EFlux_" + device + "_Z.csv"};
}

struct Files {
  TempDir directory;
  std::string log;

  Files(const std::string& text, const std::string& options) {
    directory.write("a.cfg", text);
    const RunResult run = run_shell(directory, "$ZERITH -i a.cfg " + options);
    EXPECT_EQ(run.status, 0) << options << "\n" << run.err;
    log = without_times(run.out);
  }
};

// Sheet number s of a file that holds all of them.
std::string sheet(const std::string& text, int s) {
  std::size_t begin = 0;
  for (int i = 0; i < s; ++i) begin = text.find("\n\n", begin) + 2;
  return text.substr(begin, text.find("\n\n", begin) + 2 - begin);
}

void expect_same(const Files& a, const Files& b, const std::vector<std::string>& results) {
  std::vector<std::string> names(std::begin(kInputs), std::end(kInputs));
  names.insert(names.end(), results.begin(), results.end());
  for (const std::string& name : names) {
    EXPECT_EQ(a.directory.read(name), b.directory.read(name)) << name;
    EXPECT_NE(a.directory.read(name), "") << name;
  }
}

TEST(Stream, OfTheDirectSumIsTheReferenceToTheByte) {
  for (const char* planes : {"", "-l 5", "-l -1", "-l 21", "-l -3", "-x 1 -l 3", "-x 2 -l 7",
                             "-x 1 -l 40", "-x 2 -l -2", "-x 1 -l -1"}) {
    SCOPED_TRACE(planes);
    const Files whole(scene(), std::string("-p ") + planes);
    const Files stream(scene(), std::string("--stream -p ") + planes);
    EXPECT_EQ(stream.log, whole.log);
    expect_same(whole, stream, result_names("cpu"));
  }
}

TEST(Stream, OnTheDeviceIsTheDevicesOwnToTheByte) {
  for (const char* planes : {"-l -1", "-x 1 -l 3", "-x 2 -l 7", "-x 2 -l 40"}) {
    SCOPED_TRACE(planes);
    const Files whole(scene(), std::string("-g -p ") + planes);
    const Files stream(scene(), std::string("--stream -g -p ") + planes);
    EXPECT_EQ(stream.log, whole.log);
    expect_same(whole, stream, result_names("gpu"));
    expect_same(whole, stream, result_names("cpu"));
  }
}

// What a stream cannot serve holds volumes: all planes along x or y, and comparisons.
TEST(Stream, OfTransformsGivesTheBytesOfWholeVolumes) {
  const Files all_xz(scene(), "--fast -g -p -x 1 -l -1");
  const Files one_xz(scene(), "--fast -g -p -x 1 -l 9");
  const Files all_xy(scene(), "--fast -g -p -l -1");
  const Files compared(scene(), "--fast -g -p -l -1 -c");
  for (const char* device : {"cpu", "gpu"}) {
    const std::vector<std::string> names = result_names(device);
    for (std::size_t i = 0; i < 2; ++i)
      EXPECT_EQ(one_xz.directory.read(names[i]), sheet(all_xz.directory.read(names[i]), 9));
    EXPECT_EQ(one_xz.directory.read(names[2]), all_xz.directory.read(names[2]));
    expect_same(compared, all_xy, names);
  }
}

TEST(Stream, HoldsMoreVoxelsThanAnIntCounts) {
  TempDir directory;
  directory.write("a.cfg",
                  "[global]\nscale=um\npolarization=te\nx=4\ny=4\nz=100000\nnx=512\nny=512\n"
                  "nz=9000\n[/global]\n[wave]\nshape=plane\nlambda=1\namp=1\n[/wave]\n"
                  "[layer]\nz=100000\nn=1\n[/layer]\n");
  const RunResult refused = run_shell(directory, "$ZERITH -q -i a.cfg --fast -x 1 -l -1");
  EXPECT_EQ(refused.status, 255);
  EXPECT_NE(refused.err.find("2^31 voxels"), std::string::npos) << refused.err;
  // Prepared in a stream, without propagating so many slices.
  const RunResult run = run_shell(directory, "$ZERITH -q -i a.cfg --fast");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(directory.read("N_sys.csv").starts_with("1,1,1,"));
}

TEST(Stream, SaysWhyItHoldsVolumes) {
  for (const auto& [options, reason] :
       {std::pair{"--fast -x 2 -l -1", "-l -1 asks for all planes"},
        std::pair{"--fast -g -p -c", "-c compares whole volumes"}}) {
    TempDir directory;
    directory.write("a.cfg", scene());
    // Notes are for a terminal: script gives the run one.
    const RunResult run = run_shell(
        directory, std::string("script -qec \"$ZERITH -i a.cfg ") + options + "\" /dev/null");
    EXPECT_NE(run.out.find(reason), std::string::npos) << run.out;
  }
}

}  // namespace
