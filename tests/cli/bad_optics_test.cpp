// Input that no run can begin with: said with file and line, and nothing is written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <regex>
#include <set>

#include "cli/configuration.h"
#include "data/hdf5_writer.h"
#include "support/process.h"

namespace {

// in.h5 has /n of 1 x 2 x 2 indices and /E of 2 x 2 amplitudes, and much that is wrong.
void write_inputs(const TempDir& directory) {
  const std::vector<double> ones(8, 1.0);
  const std::vector<double> nan = {1, 1, 1, std::nan(""), 1, 1, 1, 1};
  Hdf5Writer file(directory.path("in.h5").string());
  file.write("n", {1, 2, 2}, ones.data());
  file.write("E", {2, 2, 2}, ones.data());
  file.write("flat", {8}, ones.data());
  file.write("whole", {2, 2, 2}, ones.data(), H5T_STD_I32LE);
  file.write("nan", {2, 2, 2}, nan.data());
  file.write("large", {1, 1 << 15, 1 << 14, 2}, nullptr);
  file.write("bare", {2, 2, 2}, ones.data());
  file.attribute("/nan", "Spacing", {1e-6, 1e-6, 1e-6});
  file.attribute("/n", "Spacing", {1e-6, -1e-6, 1e-6});
  directory.write("text.h5", "n = 1.5\n");
  std::filesystem::create_directory(directory.path("folder.h5"));
}

struct Bad {
  std::string key, value;  // file and dataset, or a key of the section
  std::string message;
};

const std::vector<Bad> kFiles = {
    {"none.h5", "/n", "none.h5:/n cannot be read: there is no such file"},
    {"text.h5", "/n", "text.h5:/n cannot be read: that is not an HDF5 file"},
    {"folder.h5", "/n", "folder.h5:/n cannot be read: that is no file"},
    {"in.h5", "/m", "in.h5:/m is no data set of the file; it has /E, /bare, /flat, /large, /n"},
    {"in.h5", "/flat", "in.h5:/flat has the shape .8.; a "},
    {"in.h5", "/whole", "in.h5:/whole holds no floating-point numbers"},
    {"in.h5", "/nan", "in.h5:/nan holds a value that is not finite, at slice "},
    {"in.h5", "/large", "in.h5:/large is too large: its shape is "},
};

// Refused by the last line that begins so, whatever is asked for, before anything is written.
void expect_refused(const TempDir& directory, const std::string& configuration,
                    const std::string& line, const std::string& message) {
  directory.write("a.cfg", configuration);
  const auto end = configuration.begin() + std::ptrdiff_t(configuration.rfind("\n" + line)) + 1;
  const std::regex expected("(zerith: warning: .*\n)*zerith: error: a\\.cfg: line " +
                            std::to_string(std::count(configuration.begin(), end, '\n') + 1) +
                            ": " + message + "[^\n]*\n");
  for (const char* options : {"-q -p", "-g --fast", "-p --check"}) {
    const RunResult run = run_shell(directory, std::string("$ZERITH -i a.cfg ") + options);
    EXPECT_EQ(run.status, 255) << message << options;
    EXPECT_TRUE(std::regex_match(run.err, expected)) << run.err << message << options;
  }
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory.path()))
    names.insert(entry.path().filename());
  EXPECT_EQ(names, (std::set<std::string>{"a.cfg", "folder.h5", "in.h5", "text.h5"})) << message;
}

// The message names the section that asks for the file.
TEST(BadOptics, FilesOfWavesLayersScreensAndModes) {
  const TempDir directory;
  write_inputs(directory);
  for (const Bad& bad : kFiles) {
    const std::string file = "\nfile=" + bad.key + "\ndataset=" + bad.value;
    expect_refused(directory, configuration("", "n = 1", "shape=file\ndx=1\ndy=1" + file), "[wave]",
                   bad.message);
    const std::string spacing = "\ndx=1\ndy=1\ndz=1" + file;
    expect_refused(directory, configuration("", "type=file" + spacing), "[layer]", bad.message);
    expect_refused(directory,
                   configuration("", "n=1\n[/layer]\n[layer]\ntype=file" + spacing + "\nover=1"),
                   "[layer]", bad.message);
    expect_refused(directory,
                   configuration("", "type=screen\nt=0.5\ndx=1\ndy=1" + file + "\n[/layer]"),
                   "[layer]", bad.message);
    expect_refused(directory,
                   configuration() + "[monitor]\ntype=overlap\nfile=o.csv\nmode=file\nmodefile=" +
                       bad.key + "\ndataset=" + bad.value + "\n[/monitor]\n",
                   "[monitor]", bad.message);
  }
  // Samples without a spacing, or with one that is none.
  expect_refused(directory, configuration("", "type=file\nfile=in.h5\ndataset=/bare"), "[layer]",
                 "in.h5:/bare has no attribute Spacing");
  expect_refused(directory, configuration("", "type=file\nfile=in.h5"), "[layer]",
                 "in.h5:/n has an attribute Spacing of -0.000001; it must be above 0");
}

TEST(BadOptics, KeysThatMakeNoSense) {
  const TempDir directory;
  write_inputs(directory);
  const std::string levels =
      "value '.*' of 'levels' in .layer. must be a whole number from 1 to "
      "65536";
  const auto layer = [](const std::string& text) { return configuration("", text); };
  for (const char* value : {"0", "-3", "65537", "8.5", "many", "1e99"})
    expect_refused(directory, layer(std::string("type=lens\nr=2\nn=1\nlevels = ") + value),
                   "levels", levels);
  expect_refused(directory,
                 configuration() +
                     "[monitor]\ntype=overlap\nfile=o.csv\nmode=file\n"
                     "modefile=in.h5\ndx=1\n[/monitor]\n",
                 "[monitor]", ".monitor.: dx and dy go together");
  expect_refused(directory, configuration("edge = 1.6"), "edge",
                 ".global.: edge is wider than half the domain");
  expect_refused(directory, layer("n=1\nover = 1"), "[layer]",
                 ".layer.: over = 1 paints over the layer before it, and this is the first");
  expect_refused(directory,
                 layer("type=screen\nr=1\n[/layer]\n[layer]\ntype=waveguide\nn=1.5\nr=1\nover=1"),
                 "[layer]", ".layer.: over = 1 paints over the layer before it, and there is none");
  expect_refused(directory, layer("n=1\n[/layer]\n[layer]\ntype=screen\nr=1"), "[layer]",
                 ".layer.: the screen lies behind the domain");
  expect_refused(directory, layer("type=lens\nr=2\nn=1.5\ntiltx=90"), "tiltx",
                 "value '90' of 'tiltx' in .layer. must be ");
  expect_refused(directory, configuration("", "n=1", "shape=gaussian\nwaist=0"), "waist",
                 "value '0' of 'waist' in .wave. must be ");
}

}  // namespace
