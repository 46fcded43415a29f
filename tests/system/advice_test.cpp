// A scene in order draws no word; each slip draws its own.
#include "system/advice.h"

#include <gtest/gtest.h>

#include <cmath>
#include <regex>
#include <sstream>

#include "support/errors.h"
#include "support/process.h"

namespace {

std::string advice_on(const std::string& file) {
  Description d;
  const Messages messages;
  read_description(file, {}, d, true);
  advise(d);
  return messages.text();
}

// 10 x 12 samples of 2 x 3 and 24 slices of 0.5; wavelength 10, index up to 1.5. The waveguide
// stands second, off the axis.
const std::string kOrderly =
    "[global]\nx=20\ny=36\nz=12\nnx=10\nny=12\nnz=24\n[/global]\n"
    "[wave]\nshape = gaussian\namp=1\nlambda=10\nwaist=4\n[/wave]\n"
    "[layer]\nz = 5\nn = 1.5\n[/layer]\n"
    "[layer]\ntype = waveguide\nz = 7\nr = 5\nx = 3\nn = 1.5\nne = 1.4\n[/layer]\n"
    "[global]\npolarization=te\n[/global]\n";

std::string advice(std::string text, const std::string& old, const std::string& by) {
  const std::size_t at = text.find(old);
  EXPECT_NE(at, std::string::npos) << old;
  if (at != std::string::npos) text.replace(at, old.size(), by);
  const TempDir directory;
  directory.write("a.cfg", text);
  return advice_on(directory.path("a.cfg").string());
}

TEST(Advice, HasNoWordForAnOrderlyScene) {
  EXPECT_EQ(advice(kOrderly, "", ""), "");
  int examples = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::string(ZERITH_SOURCE_DIR) + "/examples")) {
    if (entry.path().extension() != ".cfg") continue;
    ++examples;
    EXPECT_EQ(advice_on(entry.path().string()), "") << entry.path();
  }
  EXPECT_GE(examples, 7);
}

struct Slip {
  const char* old;
  const char* by;
  const char* warning;  // behind the file's name; nothing if there is none
};

// clang-format off
const Slip kSlips[] = {
    // Half a wavelength in 1.5 is 3.333; dx is 20/nx, dy is 36/ny.
    {"nx=10", "nx=6", nullptr},
    {"nx=10", "nx=5", "line 5: [global]: dx = 4 is above half a wavelength in the densest medium, 3.33333: steep waves are missing; make nx at least 6"},
    {"ny=12", "ny=10", "line 6: [global]: dy = 3.6 is above half a wavelength in the densest medium, 3.33333: steep waves are missing; make ny at least 11"},
    {"nz=24", "nz=2", "line 15: [layer]: z = 5 is 0.833333 slices and takes 1; choose nz"},
    {"z=12\nnx=10\nny=12\nnz=24", "z=120\nnx=10\nny=12\nnz=12", "line 19: [layer]: the index varies sideways here, and dz = 10 is above a wavelength, 6.66667; make nz at least 18"},
    {"x=20", "x=0", "line 2: [global]: x = 0: the domain has no extent there"},
    {"z=12\n", "", "[global]: z = 0: the domain has no extent there"},
    {"nz=24\n", "", "[global]: nz is 0: there is nothing to compute"},
    {"polarization=te", "", "[global]: has no polarization"},
    {"n = 1.5", "n = -1.5", "line 15: [layer]: has index -1.5, in which no field makes sense"},
    {"shape = gaussian\n", "", "line 9: [wave]: has no shape and is random"},
    {"amp=1\n", "", "line 9: [wave]: amp is 0: the wave is dark"},
    {"lambda=10\n", "", "line 9: [wave]: lambda is 0"},
    {"lambda=10", "lambda=-10", "line 9: [wave]: lambda = -10 is negative"},
    {"waist=4", "sigmax=2", "line 9: [wave]: sigmay is 0: the field is not finite"},
    {"waist=4", "waist=9.9", nullptr},
    {"waist=4", "waistx=10.1\nwaisty=4", "line 9: [wave]: the beam is 20.2 wide along x, wider than the domain"},
    {"waist=4", "waistx=4\nwaisty=18.5", "line 9: [wave]: the beam is 37 wide along y, wider than the domain"},
    {"waist=4", "waist=4\nx=-11", "line 9: [wave]: x = -11 is outside of the domain, which ends at 10"},
    {"waist=4", "waist=4\ny=18.5", "line 9: [wave]: y = 18.5 is outside of the domain, which ends at 18"},
    {"[layer]", "[wave]\nshape=plane\namp=1\nlambda=10\n[/wave]\n[layer]", "line 9: [wave]: is replaced by that of line 15; give that one add = 1"},
    {"[layer]", "[wave]\nshape=plane\namp=1\nlambda=10\nadd=1\n[/wave]\n[layer]", nullptr},
    {"[layer]", "[wave]\nshape=plane\namp=1\nlambda=9\nadd=1\n[/wave]\n[layer]", "line 15: [wave]: lambda = 9 is not that of the run, 10"},
    {"z = 5", "z = 5.5", "line 19: [layer]: the stack is thicker than the domain: from this layer on it is cut, by 1 slices in all"},
    {"z = 7", "z = 9", "line 19: [layer]: the stack is thicker than the domain: from this layer on it is cut, by 4 slices in all"},
    {"z = 7", "z = 7.04", nullptr},
    {"z = 5", "z = 4.8", "line 15: [layer]: z = 4.8 is 9.6 slices and takes 10"},
    {"z = 5", "z = 4.96", nullptr},
    {"z = 5\n", "", "line 15: [layer]: z is 0: the layer has no thickness"},
    {"n = 1.5\n", "", "line 15: [layer]: has index 0, in which no field makes sense; give it n"},
    {"ne = 1.4\n", "", "line 19: [layer]: has index 0 around it, in which no field makes sense; give it ne"},
    {"r = 5\n", "", "line 19: [layer]: r is 0: it has no body"},
    {"n = 1.5", "n = 1.5\nne = 2\nk = 0.1\npx = 0", "line 15: [layer]: type = homog does not use ne with permittivity = 0"},
    {"type = waveguide", "type = lens", "line 19: [layer]: type = lens does not use x\n"},
    {"n = 1.5", "n = 1.5\neps_r = 2.25", "line 15: [layer]: type = homog does not use eps_r with permittivity = 0"},
    {"nz=24", "nz=24\npermittivity=1", "line 16: [layer]: type = homog does not use n with permittivity = 1"},
};
// clang-format on

TEST(Advice, NamesEachSlipWithItsLine) {
  for (const Slip& slip : kSlips) {
    const std::string said = advice(kOrderly, slip.old, slip.by);
    if (slip.warning == nullptr)
      EXPECT_EQ(said, "") << slip.by;
    else
      EXPECT_NE(said.find(std::string("a.cfg: ") + slip.warning), std::string::npos) << said;
  }
}

TEST(Advice, MissesAWave) {
  EXPECT_NE(
      advice(kOrderly.substr(0, kOrderly.find("[wave]")), "", "").find("a.cfg: there is no [wave]"),
      std::string::npos);
}

// The direction that is named meets itself: taken over, it draws no word. In 1.5 the wave is 6.67
// long; 20 of the domain hold whole numbers of cycles, 36 of it others.
TEST(Advice, NamesADirectionThatMeetsItself) {
  const std::string kBeam = "shape = gaussian\namp=1\nlambda=10\nwaist=4\n";
  const std::regex named("theta = (\\S+), phi = (\\S+)\n");
  for (const auto& [theta, phi] :
       {std::pair("17", "0"), std::pair("-17", "0"), std::pair("31", "40"), std::pair("12", "90"),
        std::pair("-25", "200")}) {
    const auto wave = [](const std::string& t, const std::string& p) {
      return "shape = plane\ntheta=" + t + "\nphi=" + p + "\namp=1\nlambda=10\n";
    };
    const std::string said = advice(kOrderly, kBeam, wave(theta, phi));
    std::smatch angles;
    ASSERT_TRUE(std::regex_search(said, angles, named)) << said;
    EXPECT_EQ(advice(kOrderly, kBeam, wave(angles[1], angles[2])), "") << said;
    // Near by: half a cycle at most along either side.
    const double degree = M_PI / 180;
    const double old_sx = std::sin(std::stod(theta) * degree) * std::cos(std::stod(phi) * degree);
    const double new_sx =
        std::sin(std::stod(angles[1]) * degree) * std::cos(std::stod(angles[2]) * degree);
    EXPECT_LE(std::fabs(new_sx - old_sx), 0.5 * (10 / 1.5) / 20 + 1e-6) << said;
  }
  EXPECT_EQ(advice(kOrderly, kBeam, "shape = plane\namp=1\nlambda=10\n"), "");
}

}  // namespace
