// What a description must fulfil, monitors, and values put over the file's.
#include "system/description.h"

#include <gtest/gtest.h>

#include "support/errors.h"
#include "support/process.h"

namespace {

struct Read {
  explicit Read(const std::string& text, const std::vector<std::string>& overrides = {}) {
    const TempDir directory;
    directory.write("a.cfg", text);
    testing::internal::CaptureStdout();
    read_description(directory.path("a.cfg").string(), overrides, d, false);
    log = testing::internal::GetCapturedStdout();
  }
  Description d;
  std::string log;
};

// A grid of 10 x 8 x 6 with spacings 2, 3 and 0.5, and room for more.
const std::string kGrid = "[global]\nx=20\ny=24\nz=3\nnx=10\nny=8\nnz=6\n[/global]\n";
const std::string kSlab = "[layer]\nz = 3\nn = 1.5\n[/layer]\n";

std::string monitor(const std::string& lines) {
  return std::string("[monitor]\n").append(lines).append("\n[/monitor]\n");
}
std::string layer(const std::string& lines) {
  return std::string("[layer]\n").append(lines).append("\n[/layer]\n");
}

TEST(Monitors, AreReadInTheirOrder) {
  const Read read(kGrid +
                  monitor("type = field\nfile = a.vtkhdf ; where\nsave = E, intensity\n"
                          "every = 4\nz1 = 1\nz2 = 2\ny = 0\nprecision = single") +
                  "free text\n" +
                  monitor("type = overlap\nfile=b.csv\nmode=lp01\nr=2\nn=1.5\nne=1.4\ntiltx=-3"));
  ASSERT_EQ(read.d.monitors.size(), 2U);
  const Monitor& field = read.d.monitors[0];
  EXPECT_EQ(std::tuple(field.type, field.file, field.every, field.is_single, field.line),
            std::tuple(MonitorType::kField, std::string("a.vtkhdf"), 4, true, 9));
  EXPECT_TRUE(field.saves_E && field.saves_intensity && !field.saves_flux && !field.saves_index);
  EXPECT_EQ(std::tuple(field.x, field.y, field.z1, field.z2),
            std::tuple(std::optional<double>(), std::optional(0.0), std::optional(1.0),
                       std::optional(2.0)));
  const Monitor& overlap = read.d.monitors[1];
  EXPECT_EQ(std::tuple(overlap.mode, overlap.r, overlap.n, overlap.ne, overlap.tiltx, overlap.line),
            std::tuple(Monitor::Mode::kLp01, std::optional(2.0), 1.5, 1.4, -3.0, 20));
  EXPECT_NE(read.log.find("\t\t\t\t[monitor]\n\t\t\t\t\ttype =\tfield\n\t\t\t\t\tfile =\ta.vtkhdf\n"
                          "\t\t\t\t\tsave =\tE,intensity\n"),
            std::string::npos);
}

struct Refusal {
  std::string text;
  std::string message;  // behind the file's name
  std::vector<std::string> overrides = {};
};

void expect_refused(const std::vector<Refusal>& refusals) {
  for (const Refusal& refusal : refusals) {
    SCOPED_TRACE(refusal.text + refusal.message);
    const TempDir directory;
    directory.write("a.cfg", refusal.text);
    const std::string name = directory.path("a.cfg").string();
    Description d;
    EXPECT_ERROR(read_description(name, refusal.overrides, d, true), ".*" + refusal.message);
  }
}

// clang-format off
TEST(Monitors, AreRefusedWithTheirLine) {
  expect_refused({
      {monitor("type = field"), "a.cfg: line 1: \\[monitor\\]: needs a file"},
      {kGrid + monitor("file = a"), "line 9: \\[monitor\\]: needs a type: field, beam, overlap or focus"},
      {monitor("type = feild"), "line 2: unknown value 'feild' of 'type' in \\[monitor\\]; did you mean 'field'"},
      {monitor("every = 0"), "line 2: value '0' of 'every' in \\[monitor\\] must be a whole number of 1 or more"},
      {monitor("every = 2.5"), "line 2: value '2.5' of 'every'"},
      {monitor("save = E,flxu"), "line 2: value 'E,flxu' of 'save' in \\[monitor\\] must be a comma list"},
      {monitor("z1 = 5 um"), "value '5um' of 'z1' in \\[monitor\\] must be a number"},
      {monitor("r = nan"), "value 'nan' of 'r' in \\[monitor\\] must be a number above 0"},
      {monitor("tilty = 90"), "must be an angle between -90 and 90 degrees"},
      {monitor("fiel = a"), "line 2: unknown key 'fiel' in \\[monitor\\]; did you mean 'file'"},
      {monitor("file ="), "line 2: key 'file' in \\[monitor\\] has no value"},
      {"\n[monitor]\ntype = beam\n", "line 2: \\[monitor\\] has no closing tag"},
      {"[monitor]\n[layer]\n", "line 2: \\[layer\\] stands inside the \\[monitor\\] of line 1"},
      {"[monitor]\n[/layer]\n", "line 2: \\[/layer\\] stands inside the \\[monitor\\] of line 1"},
      {"[wave]\n[monitor]\n", "line 2: \\[monitor\\] stands inside the \\[wave\\] of line 1"},
      {monitor("type=field\nfile=a\nx1=2\nx2=1"), "line 1: .*x1 is above x2"},
      {monitor("type=field\nfile=a\nz=2\nz2=1"), "line 1: .*z is one plane and goes without z1 and z2"},
      {monitor("type=overlap\nfile=a\nmode=gaussian"), "mode = gaussian needs waist"},
      {monitor("type=overlap\nfile=a\nmode=file"), "mode = file needs modefile"},
      {monitor("type=overlap\nfile=a\nmode=lp01\nn=2\nne=1"), "mode = lp01 needs r"},
      {monitor("type=overlap\nfile=a\nmode=lp01\nn=1\nne=1\nr=1"), "mode = lp01 needs n, of the core, above ne"},
  });
}

TEST(Description, RefusesNewKeysWithoutSense) {
  expect_refused({
      {"[global]\nedge = -1", "line 2: value '-1' of 'edge' in \\[global\\] must be a number of 0 or more"},
      {"[global]\nedge = 3x", "line 2: value '3x' of 'edge'"},
      {"[global]\ntrim = no", "line 2: value 'no' of 'trim' in \\[global\\] must be 0 or 1"},
      {"[global]\nx=20\ny=24\nedge = 10.1", "line 4: \\[global\\]: edge is wider than half the domain"},
      {layer("levels = 0\ntype = grin\nr = 1"), "line 2: value '0' of 'levels' in \\[layer\\] must be a whole number from 1 to 65536"},
      {layer("type = lens\nlevels = 65537"), "value '65537' of 'levels'"},
      {layer("type = grating\nduty = 1.5"), "value '1.5' of 'duty' in \\[layer\\] must be a number between 0 and 1"},
      {layer("type = screen\nt = -1"), "value '-1' of 't' in \\[layer\\] must be a number from 0 to 1"},
      {layer("type = taper\noffsetx = 1,5"), "value '1,5' of 'offsetx' in \\[layer\\] must be a number"},
      {layer("over = 1"), "line 1: \\[layer\\]: over = 1 paints over the layer before it, and this is the first"},
      {kGrid + kSlab + layer("type=screen\nover=1\nr=1"), "line 13: .*a screen takes no slices"},
      {layer("type = grin\nz=1\nn=1.5\ng=1"), "type = grin needs r"},
      {layer("type = grin\nz=1\nn=1.5\ng=0.5\nr=2"), "vanishes within r"},
      {layer("type = file"), "type = file needs the key file"},
      {layer("type = file\nfile = n.h5\ndx = 1"), "dx and dy go together"},
      {layer("type = grating\nduty = 0.5"), "duty needs px"},
      {kGrid + layer("type = screen\nr = 1\nwx = 1\nwy = 1"), "line 9: .*a screen has one opening"},
      {kGrid + layer("type = screen"), "a screen needs its opening"},
      {kGrid + layer("type = screen\nwx = 1"), "wx and wy of a screen must be above 0"},
      {kGrid + layer("type = screen\nr = -1"), "r of a screen must be above 0"},
      {kGrid + kSlab + layer("type = screen\nr = 1"), "line 13: \\[layer\\]: the screen lies behind the domain"},
      {"[wave]\nshape = lp01\nn=1.5\nne=1.4\n[/wave]\n", "line 1: \\[wave\\]: shape = lp01 needs r"},
      {"[wave]\nshape = lp01\nn=1.4\nne=1.4\nr=1\n[/wave]\n", "shape = lp01 needs n, of the core, above ne"},
      {"[wave]\nshape = lp01\nn=1,5\nne=1.4\nr=1\n[/wave]\n", "line 3: \\[wave\\]: value '1,5' of 'n' is no number"},
      {"[wave]\nshape = file\n[/wave]\n", "shape = file needs the key file"},
      {"[wave]\nadd = yes\n[/wave]\n", "line 2: value 'yes' of 'add' in \\[wave\\] must be 0 or 1"},
  });
}

TEST(Overrides, AreRefusedUnlessUnderstoodInFull) {
  const std::string text = kGrid + kSlab + kSlab + "[wave]\namp=1\n[/wave]\n";
  expect_refused({
      {text, "--set layer2.rr=1: unknown key 'rr' in \\[layer\\]; did you mean 'r'", {"layer2.rr=1"}},
      {text, "--set layr1.r=1: unknown section 'layr'; did you mean 'layer'", {"layr1.r=1"}},
      {text, "--set layer3.r=1: the configuration has 2 \\[layer\\] sections, numbered from 1", {"layer3.r=1"}},
      {text, "--set layer.r=1: the configuration has 2 \\[layer\\] sections; write layer1", {"layer.r=1"}},
      {text, "--set layer0.r=1: the configuration has 2", {"layer0.r=1"}},
      {text, "--set monitor1.file=a: the configuration has 0 \\[monitor\\]", {"monitor1.file=a"}},
      {text, "--set global2.nx=4: \\[global\\] has no number", {"global2.nx=4"}},
      {text, "--set global.nx=2e1: value '2e1' of 'nx' is read as 2; write a whole number", {"global.nx=2e1"}},
      {text, "--set global.hfield=yes: value 'yes' of 'hfield'", {"global.hfield=yes"}},
      {text, "--set layer1.type=lense: unknown value 'lense' of 'type'; did you mean 'lens'", {"layer1.type=lense"}},
      {text, "--set layer1.levels=0: value '0' of 'levels' must be a whole number from 1", {"layer1.levels=0"}},
      {text, "--set wave.amp: write SECTION.KEY=VALUE", {"wave.amp"}},
      {text, "--set wave.amp=: write SECTION.KEY=VALUE", {"wave.amp="}},
      {text, "--set amp=1.5: write SECTION.KEY=VALUE", {"amp=1.5"}},
  });
}
// clang-format on

// A value put over the file's gives what the same value in the file gives.
TEST(Overrides, CountLikeLinesOfTheFile) {
  const std::string before = kGrid + "[wave]\namp=1\n[/wave]\n[wave]\namp=2\n[/wave]\n" + kSlab;
  const std::string behind = layer("n = 1\nne = 1\neps_r = 4\nz=1") + monitor("type = beam");
  const Read read(before + behind, {"global.nx = 5", "wave.lambda=7", "wave2.amp=3", "layer2.n=2",
                                    "layer2.n=1.25", "monitor.file=b.csv", "layer1.type=lens"});
  const Description& d = read.d;
  EXPECT_EQ(std::tuple(d.so.nx, d.so.dx, d.so.dy, d.so.dz), std::tuple(5, 4.0, 3.0, 0.5));
  EXPECT_EQ(std::tuple(d.waves[0].lambda, d.waves[0].amp), std::tuple(7.0, 1.0));
  EXPECT_EQ(std::tuple(d.waves[1].lambda, d.waves[1].amp), std::tuple(0.0, 3.0));
  EXPECT_EQ(std::tuple(d.layers[1].n, d.layers[1].eps_r), std::tuple(1.25, 1.5625));
  EXPECT_EQ(d.layers[0].t, LENS);
  EXPECT_EQ(d.monitors.at(0).file, "b.csv");
  const std::string echo =
      "\t\t\t\t[/monitor]\n\t\t\t\t\tglobal.nx =\t5\n\t\t\t\t\twave.lambda =\t7\n"
      "\t\t\t\t\twave2.amp =\t3\n\t\t\t\t\tlayer2.n =\t2\n\t\t\t\t\tlayer2.n =\t1.25\n"
      "\t\t\t\t\tmonitor.file =\tb.csv\n\t\t\t\t\tlayer1.type =\tlens\n";
  EXPECT_TRUE(read.log.ends_with(echo)) << read.log;
  // The flag decides for all layers, as if it stood at the head of the file.
  const Read by_eps(before + behind, {"monitor1.file=b.csv", "global.permittivity=1"});
  EXPECT_EQ(by_eps.d.layers[1].n, 2.0);
}

}  // namespace
