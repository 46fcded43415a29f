#include "system/keys.h"

#include "constants.h"
#include "system/stores.h"

namespace {

using namespace stores;

constexpr Words<scale, 6> kScales = {{"m", "dm", "cm", "mm", "um", "nm"}, {M, DM, CM, MM, UM, NM}};
constexpr Words<method, 6> kMethods = {{"vwpm", "wpm", "vbpm", "bpm", "fdtd", "rcwa"},
                                       {VWPM, WPM, VBPM, BPM, FDTD, RCWA}};
constexpr Words<polarization, 3> kPolarizations = {{"te", "tm", "na"}, {TE, TM, NA}};
constexpr Words<shape, 5> kShapes = {{"plane", "gaussian", "random", "lp01", "file"},
                                     {PLANE, GAUSSIAN, RANDOM, LP01, FIELD_FILE}};
constexpr Words<component, 11> kComponents = {
    {"homog", "grating", "waveguide", "taper", "lens", "asphere", "splitter", "mzehnder", "grin",
     "screen", "file"},
    {HOMOG, GRATING, WGUIDE, TAPER, LENS, ASPHERE, SPLITTER, MZEHNDER, GRIN, SCREEN, INDEX_FILE}};

constexpr Range kLevels = {1, 65536, false, "a whole number from 1 to 65536"};
constexpr Range kShare = {0, 1, true, "a number between 0 and 1"};
constexpr Range kAmplitude = {0, 1, false, "a number from 0 to 1"};

using SO = struct_sysOptions;
constexpr Key<SO> kGlobalKeys[] = {
    {"evanescent", loose_flag<&SO::evanescent>},
    {"irradiance", loose_flag<&SO::irradiance>},
    {"energyflux", loose_flag<&SO::energyflux>},
    {"absorption", loose_flag<&SO::absorption>},
    {"bidirectional", loose_flag<&SO::bidirectional>},
    {"multithreaded", loose_flag<&SO::multithreaded>},
    {"distributed", loose_flag<&SO::distributed>},
    {"efield", loose_flag<&SO::efield>},
    {"calcE", loose_flag<&SO::efield>},
    {"hfield", loose_flag<&SO::hfield>},
    {"calcH", loose_flag<&SO::hfield>},
    {"permittivity", loose_flag<&SO::permittivity>},
    {"permeability", loose_flag<&SO::permeability>},
    {"smooth", loose_flag<&SO::smooth>},
    {"threads", whole<&SO::threads>},
    {"nodes", whole<&SO::nodes>},
    {"iterations", whole<&SO::iterations>},
    {"x", whole_extent<&SO::x>},
    {"y", whole_extent<&SO::y>},
    {"z", whole_extent<&SO::z>},
    {"nx", whole<&SO::nx>},
    {"ny", whole<&SO::ny>},
    {"nz", whole<&SO::nz>},
    {"scale", word<&SO::scl, kScales>, kScales.text},
    {"method", word<&SO::mth, kMethods>, kMethods.text},
    {"polarization", word<&SO::p, kPolarizations>, kPolarizations.text},
    {"edge", strict_real<&SO::edge, kNotNegative>},
    {"trim", strict_flag<&SO::trim>},
};

using Wave = struct_emfield;

// The field of a Gaussian wave is exp(-(x^2/sigmax^2)/pi): a waist, at which it is 1/e, is
// sqrt(pi) times as long as a sigma.
template <auto... Sigmas>
Reading waist(Wave& wave, const std::string& value) {
  double radius = 0;
  Reading reading = read_real_within(value, kPositive, radius);
  if (reading.kind == Reading::kRead) ((wave.*Sigmas = radius / std::sqrt(kPi)), ...);
  return reading;
}

constexpr Key<Wave> kWaveKeys[] = {
    {"shape", word<&Wave::s, kShapes>, kShapes.text},
    {"x", real<&Wave::x>},
    {"y", real<&Wave::y>},
    {"z", real<&Wave::z>},
    {"amp", real<&Wave::amp>},
    {"theta", real<&Wave::theta>},
    {"phi", real<&Wave::phi>},
    {"beta", real<&Wave::beta>},
    {"lambda", real<&Wave::lambda>},
    {"sigmax", real<&Wave::sigmax>},
    {"sigmay", real<&Wave::sigmay>},
    {"waist", waist<&Wave::sigmax, &Wave::sigmay>},
    {"waistx", waist<&Wave::sigmax>},
    {"waisty", waist<&Wave::sigmay>},
    {"add", strict_flag<&Wave::add>},
    {"r", real<&Wave::r>},  // r, n, ne: loose, for a wave of another shape never had them
    {"n", real<&Wave::n>},
    {"ne", real<&Wave::ne>},
    {"file", name<&Wave::file>},
    {"dataset", name<&Wave::dataset>},
    {"dx", strict_real<&Wave::dx, kPositive>},
    {"dy", strict_real<&Wave::dy, kPositive>},
};

using Layer = struct_layer;
constexpr Key<Layer> kLayerKeys[] = {
    {"type", word<&Layer::t, kComponents>, kComponents.text},
    {"x", real<&Layer::x>},
    {"y", real<&Layer::y>},
    {"z", real<&Layer::z>},
    {"r", real<&Layer::r>},
    {"f", real<&Layer::f>},
    {"rin", real<&Layer::rin>},
    {"rout", real<&Layer::rout>},
    {"n", real<&Layer::n>},
    {"k", real<&Layer::k>},
    {"eps_r", real<&Layer::eps_r>},
    {"eps_i", real<&Layer::eps_i>},
    {"ne", real<&Layer::ne>},
    {"ke", real<&Layer::ke>},
    {"epse_r", real<&Layer::epse_r>},
    {"epse_i", real<&Layer::epse_i>},
    {"px", real<&Layer::px>},
    {"py", real<&Layer::py>},
    {"wx", real<&Layer::wx>},
    {"wy", real<&Layer::wy>},
    {"se", real<&Layer::se>},
    {"sm", real<&Layer::sm>},
    {"levels", strict_whole<&Layer::levels, kLevels>},
    {"offsetx", strict_real<&Layer::offsetx, kAny>},
    {"offsety", strict_real<&Layer::offsety, kAny>},
    {"tiltx", strict_real<&Layer::tiltx, kAngle>},
    {"tilty", strict_real<&Layer::tilty, kAngle>},
    {"over", strict_flag<&Layer::over>},
    {"g", strict_real<&Layer::g, kNotNegative>},
    {"duty", strict_real<&Layer::duty, kShare>},
    {"t", strict_real<&Layer::transmission, kAmplitude>},
    {"file", name<&Layer::file>},
    {"dataset", name<&Layer::dataset>},
    {"dx", strict_real<&Layer::file_dx, kPositive>},
    {"dy", strict_real<&Layer::file_dy, kPositive>},
    {"dz", strict_real<&Layer::file_dz, kPositive>},
    {"interpolate", strict_flag<&Layer::interpolate>},
};

// [fdtd] and [rcwa] have no keys and no closing tags here: they belong to other methods.
constexpr Tag kTags[] = {
    {"[global]", GLOBAL_S, NONE},    {"[wave]", WAVE_S, NONE},    {"[layer]", LAYER_S, NONE},
    {"[fdtd]", FDTD_S, NONE},        {"[rcwa]", RCWA_S, NONE},    {"[/global]", NONE, GLOBAL_E},
    {"[/wave]", NONE, WAVE_E},       {"[/layer]", NONE, LAYER_E}, {"[monitor]", MONITOR_S, NONE},
    {"[/monitor]", NONE, MONITOR_E},
};

}  // namespace

std::span<const Key<struct_sysOptions>> global_keys() {
  return kGlobalKeys;
}
std::span<const Key<struct_emfield>> wave_keys() {
  return kWaveKeys;
}
std::span<const Key<struct_layer>> layer_keys() {
  return kLayerKeys;
}
std::span<const Tag> tags() {
  return kTags;
}
