#include "system/keys.h"

#include <algorithm>

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

// The field of a Gaussian wave is exp(-(x^2/sigmax^2)/pi). Its 1/e waist is sqrt(pi) times sigma.
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
    {"waist", waist<&Wave::sigmax, &Wave::sigmay>, {}, kinds(GAUSSIAN)},
    {"waistx", waist<&Wave::sigmax>, {}, kinds(GAUSSIAN)},
    {"waisty", waist<&Wave::sigmay>, {}, kinds(GAUSSIAN)},
    {"add", strict_flag<&Wave::add>},
    {"r", real<&Wave::r>},  // r, n, ne: lenient, for older files
    {"n", real<&Wave::n>},
    {"ne", real<&Wave::ne>},
    {"file", name<&Wave::file>, {}, kinds(FIELD_FILE)},
    {"dataset", name<&Wave::dataset>, {}, kinds(FIELD_FILE)},
    {"dx", strict_real<&Wave::dx, kPositive>, {}, kinds(FIELD_FILE)},
    {"dy", strict_real<&Wave::dy, kPositive>, {}, kinds(FIELD_FILE)},
};

constexpr Kinds kSecondMaterial = kinds(GRATING, WGUIDE, TAPER, LENS, SPLITTER, GRIN);
constexpr Kinds kFirstMaterial = kSecondMaterial | kinds(HOMOG);

using Layer = struct_layer;
constexpr Key<Layer> kLayerKeys[] = {
    {"type", word<&Layer::t, kComponents>, kComponents.text},
    {"x", real<&Layer::x>, {}, kinds(WGUIDE, TAPER, SPLITTER, GRIN, SCREEN, INDEX_FILE)},
    {"y", real<&Layer::y>, {}, kinds(WGUIDE, TAPER, SPLITTER, GRIN, SCREEN, INDEX_FILE)},
    {"z", real<&Layer::z>, {}, ~kinds(SCREEN)},
    {"r", real<&Layer::r>, {}, kinds(WGUIDE, LENS, GRIN, SCREEN)},
    {"f", real<&Layer::f>, {}, kinds()},
    {"rin", real<&Layer::rin>, {}, kinds(TAPER, SPLITTER)},
    {"rout", real<&Layer::rout>, {}, kinds(TAPER, SPLITTER)},
    {"n", real<&Layer::n>, {}, kFirstMaterial},
    {"k", real<&Layer::k>, {}, kFirstMaterial},
    {"eps_r", real<&Layer::eps_r>, {}, kFirstMaterial},
    {"eps_i", real<&Layer::eps_i>, {}, kFirstMaterial},
    {"ne", real<&Layer::ne>, {}, kSecondMaterial},
    {"ke", real<&Layer::ke>, {}, kSecondMaterial},
    {"epse_r", real<&Layer::epse_r>, {}, kSecondMaterial},
    {"epse_i", real<&Layer::epse_i>, {}, kSecondMaterial},
    {"px", real<&Layer::px>, {}, kinds(GRATING)},
    {"py", real<&Layer::py>, {}, kinds(GRATING)},
    {"wx", real<&Layer::wx>, {}, kinds(GRATING, SPLITTER, SCREEN)},
    {"wy", real<&Layer::wy>, {}, kinds(GRATING, SPLITTER, SCREEN)},
    {"se", real<&Layer::se>, {}, kinds()},
    {"sm", real<&Layer::sm>, {}, kinds()},
    {"levels",
     strict_whole<&Layer::levels, kLevels>,
     {},
     kSecondMaterial | kinds(SCREEN, INDEX_FILE)},
    {"offsetx", strict_real<&Layer::offsetx, kAny>, {}, ~kinds(HOMOG, ASPHERE, MZEHNDER)},
    {"offsety", strict_real<&Layer::offsety, kAny>, {}, ~kinds(HOMOG, ASPHERE, MZEHNDER)},
    {"tiltx", strict_real<&Layer::tiltx, kAngle>, {}, kinds(WGUIDE, LENS)},
    {"tilty", strict_real<&Layer::tilty, kAngle>, {}, kinds(WGUIDE, LENS)},
    {"over", strict_flag<&Layer::over>},
    {"g", strict_real<&Layer::g, kNotNegative>, {}, kinds(GRIN)},
    {"duty", strict_real<&Layer::duty, kShare>, {}, kinds(GRATING)},
    {"t", strict_real<&Layer::transmission, kAmplitude>, {}, kinds(SCREEN)},
    {"file", name<&Layer::file>, {}, kinds(SCREEN, INDEX_FILE)},
    {"dataset", name<&Layer::dataset>, {}, kinds(SCREEN, INDEX_FILE)},
    {"dx", strict_real<&Layer::file_dx, kPositive>, {}, kinds(SCREEN, INDEX_FILE)},
    {"dy", strict_real<&Layer::file_dy, kPositive>, {}, kinds(SCREEN, INDEX_FILE)},
    {"dz", strict_real<&Layer::file_dz, kPositive>, {}, kinds(INDEX_FILE)},
    {"interpolate", strict_flag<&Layer::interpolate>, {}, kinds(INDEX_FILE)},
};

// [fdtd] and [rcwa] have no keys and no closing tags: they belong to other methods.
constexpr Tag kTags[] = {
    {"[global]", GLOBAL_S, NONE},    {"[wave]", WAVE_S, NONE},    {"[layer]", LAYER_S, NONE},
    {"[fdtd]", FDTD_S, NONE},        {"[rcwa]", RCWA_S, NONE},    {"[/global]", NONE, GLOBAL_E},
    {"[/wave]", NONE, WAVE_E},       {"[/layer]", NONE, LAYER_E}, {"[monitor]", MONITOR_S, NONE},
    {"[/monitor]", NONE, MONITOR_E},
};

template <typename Record>
bool is_used_by(int kind, std::span<const Key<Record>> keys, std::string_view name) {
  return std::any_of(keys.begin(), keys.end(), [=](const Key<Record>& key) {
    return key.name == name && (key.used_by & kinds(kind)) != 0;
  });
}

}  // namespace

bool is_used(const struct_layer& l, std::string_view key) {
  return is_used_by(l.t, layer_keys(), key);
}
bool is_used(const struct_emfield& wave, std::string_view key) {
  return is_used_by(wave.s, wave_keys(), key);
}

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
