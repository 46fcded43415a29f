// What users bring, by every propagator: each component and key in a run of the program, direct and
// fast, on the CPU and on the device, in volumes and in slices, and in --check.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <regex>

#include "data/dataset.h"
#include "data/hdf5_writer.h"
#include "support/process.h"

namespace {

using Field = std::vector<std::complex<double>>;

// A semicolon ends a line, | a layer or a wave. The layers stand behind one of two slices and fill
// the other eight, 3.2 um.
struct Case {
  const char* name;
  const char* layers;
  const char* without;  // --set of the key that the case is about: the field is another then
  const char* waves = "shape=gaussian;waist=1.3;x=0.2;theta=9;phi=35";
  const char* global = "";
};

constexpr const char* kSlab = "z=3.2;n=1.2";

// clang-format off
constexpr Case kCases[] = {
    {"lens_levels", "type=lens;z=3.2;r=-4;n=1.5;ne=1;ke=0.01;levels=8", "layer2.levels=1"},
    {"guide_levels", "type=waveguide;z=3.2;r=1.3;n=1.5;ne=1.4;k=0.02;levels=4", "layer2.levels=1"},
    {"taper_levels", "type=taper;z=3.2;rin=2;rout=0.7;n=1.5;ne=1.4;levels=16", "layer2.levels=1"},
    {"splitter_levels", "type=splitter;z=3.2;rin=0.9;rout=0.7;wx=0.7;wy=0.4;n=1.5;ne=1.4;levels=5", "layer2.levels=1"},
    {"lens_offsets", "type=lens;z=3.2;r=4;n=1.5;ne=1;offsetx=0.7;offsety=-0.4", "layer2.offsetx=0"},
    {"guide_offsets", "type=waveguide;z=3.2;r=1.3;n=1.5;ne=1.4;offsetx=0.1;offsety=0.9", "layer2.offsety=0"},
    {"taper_offsets", "type=taper;z=3.2;rin=2;rout=0.7;n=1.5;ne=1.4;offsetx=-0.8;offsety=0.3", "layer2.offsetx=0"},
    {"splitter_offsets", "type=splitter;z=3.2;rin=0.9;rout=0.7;wx=0.7;n=1.5;ne=1.4;offsety=0.8", "layer2.offsety=0"},
    {"grating_offsets", "type=grating;z=3.2;px=4.8;wx=2.4;py=8;wy=2;n=1.5;ne=1;offsetx=0.6", "layer2.offsetx=0"},
    {"lens_tiltx", "type=lens;z=3.2;r=-4;n=1.5;ne=1;levels=8;tiltx=12", "layer2.tiltx=0"},
    {"lens_tilty", "type=lens;z=3.2;r=4;n=1.5;ne=1;tilty=-20", "layer2.tilty=0"},
    {"guide_tiltx", "type=waveguide;z=3.2;r=1.3;n=1.5;ne=1.4;levels=4;tiltx=15", "layer2.tiltx=0"},
    {"guide_tilty", "type=waveguide;z=3.2;r=1.3;n=1.5;ne=1.4;tilty=-25", "layer2.tilty=0"},
    {"over_two_cores", "z=3.2;n=1.4|type=waveguide;over=1;r=1;offsetx=-1.5;n=1.5;levels=8|type=waveguide;over=1;r=1;offsetx=1.5;n=1.6;k=0.01", "layer4.n=1.4"},
    {"over_some_slices", "z=3.2;n=1.4|type=lens;over=1;z=1.6;r=-2.5;n=1.6;offsety=0.5;levels=4", "layer3.z=3.2"},
    {"grin", "type=grin;z=3.2;r=2.3;g=0.25;n=1.6;k=0.003;ne=1.3;levels=6;offsetx=0.3;offsety=-0.2", "layer2.g=0"},
    {"grin_of_64_levels", "type=grin;z=3.2;r=2.3;g=0.25;n=1.6;ne=1.3", "layer2.levels=2"},
    {"grin_over", "z=3.2;n=1.4|type=grin;over=1;z=2;r=1.8;g=0.2;n=1.6;levels=4", "layer3.g=0"},
    {"screen_round", "type=screen;r=1.6;levels=16;x=0.1;offsety=0.3|z=3.2;n=1.2", "layer2.levels=1"},
    {"screen_between", "z=1.6;n=1.2|type=screen;r=1.6|z=1.6;n=1.3", "layer3.r=1"},
    {"screen_rectangular", "type=screen;wx=2.2;wy=1.3;levels=9;offsetx=-0.2|z=3.2;n=1.2", "layer2.wy=2.2"},
    {"screen_that_dims", "z=1.6;n=1.2|type=screen;r=1.6;t=0.3|z=1.6;n=1.2", "layer3.t=0"},
    {"screen_of_a_file", "type=screen;file=in.h5;dataset=/mask;dx=1.1;dy=0.9;t=0.5|z=3.2;n=1.2", "layer2.dx=0.9"},
    {"file_nearest", "type=file;file=in.h5;z=3.2;dx=0.7;dy=0.8;dz=0.5", "layer2.dx=2"},
    {"file_interpolated", "type=file;file=in.h5;z=3.2;dx=0.7;dy=0.8;dz=0.5;interpolate=1;levels=12", "layer2.interpolate=0"},
    {"file_of_permittivities", "type=file;file=in.h5;z=3.2;dx=0.7;dy=0.8;dz=0.5;offsetx=0.3", "global.permittivity=0 --set layer1.n=1.1", "shape=gaussian;waist=1.3", "permittivity=1"},
    {"file_over", "z=3.2;n=1.4|type=file;over=1;file=in.h5;dx=0.4;dy=0.5;dz=0.5;offsety=0.4", "layer3.offsety=0"},
    {"equal_bars", "type=grating;z=3.2;px=3;duty=0.4;n=1.5;ne=1;offsetx=0.1", "layer2.duty=0.6"},
    {"equal_bars_crossed", "type=grating;z=3.2;px=3;py=2.5;duty=0.4;n=1.5;ne=1;levels=7;offsety=0.2", "layer2.py=5"},
    {"added", kSlab, "wave2.add=0", "shape=plane|add=1;shape=gaussian;waist=1.3;theta=20"},
    {"waist", kSlab, "wave.waist=1.4", "shape=gaussian;waist=1.3"},
    {"waists", kSlab, "wave.waisty=1", "shape=gaussian;waistx=1;waisty=1.4"},
    {"lp01", kSlab, "wave.r=1.5", "shape=lp01;r=1.2;n=1.5;ne=1.3;x=0.3;y=-0.2;theta=5"},
    {"wave_of_a_file", kSlab, "wave.dx=0.9", "shape=file;file=in.h5;dataset=/mask;dx=0.8;dy=0.7;x=0.1"},
    {"edge", kSlab, "global.edge=0", "shape=gaussian;waist=1.3;theta=30", "edge=1.3"},
    {"edge_and_screen", "type=lens;z=2;r=-3;n=1.5;ne=1;levels=8|type=screen;r=1.9;levels=4|z=1.2;n=1", "global.edge=0", "shape=gaussian;waist=1.3;theta=30", "edge=1.3"},
    {"trimmed", "type=lens;z=3.2;r=-4;n=1.5;ne=1;levels=8", "global.trim=0", "shape=gaussian;waist=1.3;theta=9", "trim=1"},
    {"trimmed_tm", "type=waveguide;z=3.2;r=1.3;n=1.5;ne=1.3;levels=4;tiltx=15", "global.trim=0", "shape=gaussian;waist=1.3", "trim=1;polarization=tm;edge=1"},
    {"travelling_tm", "type=lens;z=3.2;r=-4;n=1.5;ne=1;levels=8;offsetx=0.3", "global.evanescent=1", "shape=gaussian;waist=1.3;phi=40;theta=20", "polarization=tm;evanescent=0;edge=1"},
};
// clang-format on

std::string sections(const std::string& tag, const std::string& head, const std::string& text) {
  const std::string between = ";[/" + tag + "];[" + tag + "];" + head;
  std::string all = "[" + tag + "];" + head + std::regex_replace(text, std::regex("\\|"), between);
  all = std::regex_replace(all, std::regex(";"), "\n");
  return all + "\n[/" + tag + "]\n";
}

// 12 x 12 samples of 0.5 um by 5/12 um, slices of 0.4 um.
std::string configuration(const Case& c) {
  const bool is_permittivity = std::string(c.global).starts_with("permittivity=1");
  const std::string first = is_permittivity ? "z=0.8;eps_r=1.21|" : "z=0.8;n=1.1|";
  return sections("global", "scale=um;polarization=te;x=6;y=5;z=4;nx=12;ny=12;nz=10;trim=0;",
                  c.global) +
         sections("wave", "lambda=1.6;amp=1000;", c.waves) +
         sections("layer", "", first + c.layers);
}

// Indices and amplitudes without any symmetry.
void write_inputs(const std::string& path) {
  std::vector<double> indices(std::size_t{5} * 7 * 8);
  for (int s = 0; s < 5 * 7 * 8; ++s) indices[std::size_t(s)] = 1.3 + 0.05 * ((s * 7 + s / 9) % 6);
  Field mask(std::size_t{6} * 7);
  for (int s = 0; s < 6 * 7; ++s) mask[std::size_t(s)] = std::polar(0.2 + s / 60.0, 0.5 * s);
  Hdf5Writer file(path);
  file.write("n", {5, 7, 8}, indices.data());
  file.write_compound("mask", {6, 7}, mask.data());
}

double largest(const Field& field) {
  double most = 0.0;
  for (const auto& e : field) most = std::max(most, std::abs(e));
  return most;
}

// The largest difference over the largest modulus; infinite if there is no field.
double difference(const Field& a, const Field& b) {
  if (a.size() != b.size() || !(largest(a) > 1.0)) return HUGE_VAL;
  Field apart(a.size());
  std::transform(a.begin(), a.end(), b.begin(), apart.begin(), std::minus<>());
  return largest(apart) / largest(a);
}

class Optics : public testing::TestWithParam<Case> {
 protected:
  Optics() {
    directory.write("a.cfg", configuration(GetParam()));
    write_inputs(directory.path("in.h5").string());
  }

  // What a run leaves behind, which says nothing: the files of so many branches, in the order of
  // names.
  std::vector<std::string> files_of(const std::string& options, const std::string& branches) {
    const RunResult run = run_shell(directory, "$ZERITH -i a.cfg -l -1 " + options);
    EXPECT_EQ(std::pair(run.status, run.err), std::pair(0, std::string())) << options;
    std::vector<std::string> files = {directory.read("N_sys.csv"), directory.read("E_inp.csv")};
    for (const std::string branch : {"cpu", "gpu"})
      if (branches.find(branch) != std::string::npos)
        for (const char* rest : {".csv", "_Z.csv"}) {
          files.push_back(directory.read("EFlux_" + branch + rest));
          files.push_back(directory.read("E_" + branch + ".csv"));
        }
    return files;
  }

  Field field_of(const std::string& options) {
    EXPECT_EQ(run_shell(directory, "$ZERITH -i a.cfg --field f.h5 " + options).status, 0);
    const data::Dataset set(directory.path("f.h5").string(), "/E", data::Layout::kField, "");
    Field field(std::size_t{12} * 12 * 10);
    EXPECT_EQ(set.slices(), 10);
    set.read(0, 10, reinterpret_cast<double*>(field.data()));
    return field;
  }

  TempDir directory;
};

// Transmission coefficients that are rounded down may lie one notch of 1e-4 apart on the device, in
// some of the dozens of waves of such a small grid; without that the devices differ by round-off.
TEST_P(Optics, IsTheSameByEveryPropagator) {
  const bool is_trimmed = std::string(GetParam().global).find("trim=1") != std::string::npos;
  const Field direct = field_of("-p");
  EXPECT_GT(difference(direct, field_of(std::string("-p --set ") + GetParam().without)),
            is_trimmed ? 1e-6 : 1e-3);
  EXPECT_LE(difference(direct, field_of("-p --fast")), 1e-11);
  const Field on_device = field_of("-g");
  EXPECT_LE(difference(direct, on_device), is_trimmed ? 1e-4 : 1e-11);
  EXPECT_LE(difference(on_device, field_of("-g --fast")), 1e-11);
}

TEST_P(Optics, IsTheSameInSlicesAndInVolumes) {
  EXPECT_EQ(files_of("-g -p --stream", "cpu gpu"), files_of("-g -p", "cpu gpu"));
  EXPECT_EQ(files_of("-g -p --fast", "cpu gpu"), files_of("-g -p --fast -c", "cpu gpu"));
}

TEST_P(Optics, IsUnderstoodByCheck) {
  for (const char* options : {"-p", "-g -p --fast"}) {
    const RunResult run =
        run_shell(directory, std::string("$ZERITH -i a.cfg --strict --check ") + options);
    EXPECT_EQ(std::pair(run.status, run.err), std::pair(0, std::string())) << options;
    EXPECT_NE(run.out.find("warnings     none"), std::string::npos) << run.out;
  }
  const auto files = std::filesystem::directory_iterator(directory.path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 2) << "the configuration and its input";
}

INSTANTIATE_TEST_SUITE_P(Every, Optics, testing::ValuesIn(kCases),
                         [](const auto& tested) { return std::string(tested.param.name); });

Field read(const TempDir& directory, const std::string& file, const std::string& name) {
  const data::Dataset set(directory.path(file).string(), name, data::Layout::kField, "");
  Field field(std::size_t(set.slices()) * std::size_t(set.rows()) * std::size_t(set.columns()));
  set.read(0, set.slices(), reinterpret_cast<double*>(field.data()));
  return field;
}

// What a monitor saved, from another folder than the configuration's: slice 2 of the field, and the
// index in its place behind it.
TEST(Saved, FieldAndIndexComeBackToTheBit) {
  const TempDir directory;
  const std::string monitor = "[monitor]\ntype=field\nsave=E,index\nfile=";
  const Case lens = {"", "type=lens;z=3.2;r=-4;n=1.5;k=0.01;ne=1;levels=50", "",
                     "shape=gaussian;waist=1.3;theta=9"};
  directory.write("a.cfg", configuration(lens) + monitor + "a.h5\n[/monitor]\n");
  const Case again = {"", "type=file;file=../a.h5;dataset=/index;z=3.2", "",
                      "shape=file;file=../a.h5;z=0.8;amp=1"};
  std::filesystem::create_directory(directory.path("in"));
  directory.write("in/b.cfg", configuration(again) + monitor + "b.h5\n[/monitor]\n");
  for (const char* name : {"a.cfg", "in/b.cfg"}) {
    const RunResult run = run_shell(directory, std::string("$ZERITH -q -p -i ") + name);
    EXPECT_EQ(std::pair(run.status, run.err), std::pair(0, std::string())) << name;
  }
  const Field a = read(directory, "a.h5", "/E"), b = read(directory, "b.h5", "/E");
  const Field na = read(directory, "a.h5", "/index"), nb = read(directory, "b.h5", "/index");
  ASSERT_EQ(std::pair(a.size(), na.size()), std::pair(b.size(), nb.size()));
  constexpr std::ptrdiff_t kPlane = 144, kTwo = 2 * kPlane;
  EXPECT_TRUE(std::equal(a.begin() + kTwo, a.begin() + kTwo + kPlane, b.begin()));
  EXPECT_TRUE(std::equal(na.begin(), na.end() - kTwo, nb.begin() + kTwo));
  EXPECT_NE(na[kTwo], na[kTwo + 6 * 12 + 6]);
}

// A mode that is described as the wave is has all of its power: tilted, or from a file with a
// spacing of its own. The angle of a tilt is that in the medium of the first slice.
TEST(Overlap, IsOneWithTheModeThatTheWaveIs) {
  constexpr const char* kFibre = "shape=lp01;r=1.2;n=1.5;ne=1.3";
  constexpr const char* kMask = "shape=file;file=in.h5;dataset=/mask;dx=0.8;dy=0.7";
  struct {
    const char *wave, *mode, *other;  // other: --set of what makes the mode another
  } const kModes[] = {
      {"theta=20;x=0.3;y=-0.2", "mode=lp01;r=1.2;n=1.5;ne=1.3;tiltx=20;x=0.3;y=-0.2", "tiltx=0"},
      {"theta=-15;phi=90", "mode=lp01;r=1.2;n=1.5;ne=1.3;tilty=-15", "tilty=15"},
      {"", "mode=file;modefile=in.h5;dataset=/mask;dx=0.8;dy=0.7", "dy=0.8"},
  };
  for (const auto& [wave, mode, other] : kModes) {
    const TempDir directory;
    write_inputs(directory.path("in.h5").string());
    const std::string waves = *wave == 0 ? kMask : std::string(kFibre) + ";" + wave;
    directory.write("a.cfg", configuration({"", kSlab, "", waves.c_str()}) +
                                 sections("monitor", "type=overlap;file=o.csv;", mode));
    const std::string run = "$ZERITH -q -i a.cfg -p --fast";
    const RunResult same = run_shell(directory, run);
    EXPECT_EQ(std::pair(same.status, same.err), std::pair(0, std::string())) << mode;
    EXPECT_NEAR(csv_rows(directory.read("o.csv")).at(1).at(4), 1, 1e-8) << mode;
    EXPECT_EQ(run_shell(directory, run + " --set monitor." + other).status, 0);
    EXPECT_LT(csv_rows(directory.read("o.csv")).at(1).at(4), 0.99) << mode;
  }
}

// 840 MB of indices in an address space of 500.
TEST(Saved, IndicesNeedNotFitIntoMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer itself needs more address space than the limit leaves";
#endif
  const TempDir directory;
  const Case large = {"", "type=file;file=in.h5;z=3.2;dx=0.1;dy=0.1;dz=0.1", ""};
  directory.write("a.cfg", configuration(large));
  Hdf5Writer(directory.path("in.h5").string()).write("n", {400, 512, 512}, nullptr);
  const RunResult run = run_shell(directory, "ulimit -v 500000; exec $ZERITH -i a.cfg -p --check");
  EXPECT_EQ(std::pair(run.status, run.err), std::pair(0, std::string()));
}

// On a terminal, which script gives the run, and in the table of a beam.
TEST(Edge, SaysWhatItTook) {
  const TempDir directory;
  const Case slab = {"", "z=3.2;n=1.1", "", "shape=gaussian;waist=1.3;theta=30", "edge=1.3"};
  directory.write("a.cfg", configuration(slab) + "[monitor]\ntype=beam\nfile=b.csv\n[/monitor]\n");
  const RunResult run =
      run_shell(directory, "script -qec \"$ZERITH -i a.cfg -p --fast\" /dev/null");
  const std::vector<std::vector<double>> rows = csv_rows(directory.read("b.csv"));
  ASSERT_EQ(rows.size(), 11U);
  const double launched = rows[1].at(2), taken = rows[10].back();
  EXPECT_GT(taken / launched, 0.2);
  EXPECT_LT(taken, launched);
  std::smatch said;
  ASSERT_TRUE(std::regex_search(run.out, said, std::regex("absorbing edge took ([0-9.]+) ?%")))
      << run.out;
  EXPECT_NEAR(std::stod(said[1]), 100 * taken / launched, 0.06);
}

}  // namespace
