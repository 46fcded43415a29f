#include "system/keys.h"

#include <array>
#include <cstdlib>

namespace {

// A number is what strtod or strtol makes of the text: 0 if there is none, the rest ignored.
int to_int(const std::string& value) {
  return static_cast<int>(std::strtol(value.c_str(), nullptr, 10));
}

template <auto Field, typename Record>
bool store_double(Record& record, const std::string& value) {
  record.*Field = std::strtod(value.c_str(), nullptr);
  return true;
}

template <auto Field>
bool store_int(struct_sysOptions& so, const std::string& value) {
  so.*Field = to_int(value);
  return true;
}

// The extents of the domain are whole numbers of the file's unit: fractional digits are lost.
template <auto Field>
bool store_whole(struct_sysOptions& so, const std::string& value) {
  so.*Field = to_int(value);
  return true;
}

template <auto Field>
bool store_flag(struct_sysOptions& so, const std::string& value) {
  so.*Field = value == "1";
  return true;
}

// Words and the enumerators that they stand for, place by place.
template <typename Enum, std::size_t Count>
struct Words {
  std::array<std::string_view, Count> text;
  std::array<Enum, Count> meaning;
};

constexpr Words<scale, 6> kScales = {{"m", "dm", "cm", "mm", "um", "nm"}, {M, DM, CM, MM, UM, NM}};
constexpr Words<method, 6> kMethods = {{"vwpm", "wpm", "vbpm", "bpm", "fdtd", "rcwa"},
                                       {VWPM, WPM, VBPM, BPM, FDTD, RCWA}};
constexpr Words<polarization, 3> kPolarizations = {{"te", "tm", "na"}, {TE, TM, NA}};
constexpr Words<shape, 3> kShapes = {{"plane", "gaussian", "random"}, {PLANE, GAUSSIAN, RANDOM}};
constexpr Words<component, 8> kComponents = {
    {"homog", "grating", "waveguide", "taper", "lens", "asphere", "splitter", "mzehnder"},
    {HOMOG, GRATING, WGUIDE, TAPER, LENS, ASPHERE, SPLITTER, MZEHNDER}};

template <auto Field, const auto& Table, typename Record>
bool store_keyword(Record& record, const std::string& value) {
  for (std::size_t i = 0; i < Table.text.size(); ++i) {
    if (value != Table.text[i]) continue;
    record.*Field = Table.meaning[i];
    return true;
  }
  return false;
}

using SO = struct_sysOptions;
constexpr Key<SO> kGlobalKeys[] = {
    {"evanescent", store_flag<&SO::evanescent>},
    {"irradiance", store_flag<&SO::irradiance>},
    {"energyflux", store_flag<&SO::energyflux>},
    {"absorption", store_flag<&SO::absorption>},
    {"bidirectional", store_flag<&SO::bidirectional>},
    {"multithreaded", store_flag<&SO::multithreaded>},
    {"distributed", store_flag<&SO::distributed>},
    {"efield", store_flag<&SO::efield>},
    {"calcE", store_flag<&SO::efield>},
    {"hfield", store_flag<&SO::hfield>},
    {"calcH", store_flag<&SO::hfield>},
    {"permittivity", store_flag<&SO::permittivity>},
    {"permeability", store_flag<&SO::permeability>},
    {"smooth", store_flag<&SO::smooth>},
    {"threads", store_int<&SO::threads>},
    {"nodes", store_int<&SO::nodes>},
    {"iterations", store_int<&SO::iterations>},
    {"x", store_whole<&SO::x>},
    {"y", store_whole<&SO::y>},
    {"z", store_whole<&SO::z>},
    {"nx", store_int<&SO::nx>},
    {"ny", store_int<&SO::ny>},
    {"nz", store_int<&SO::nz>},
    {"scale", store_keyword<&SO::scl, kScales>, kScales.text},
    {"method", store_keyword<&SO::mth, kMethods>, kMethods.text},
    {"polarization", store_keyword<&SO::p, kPolarizations>, kPolarizations.text},
};

using Wave = struct_emfield;
constexpr Key<Wave> kWaveKeys[] = {
    {"shape", store_keyword<&Wave::s, kShapes>, kShapes.text},
    {"x", store_double<&Wave::x>},
    {"y", store_double<&Wave::y>},
    {"z", store_double<&Wave::z>},
    {"amp", store_double<&Wave::amp>},
    {"theta", store_double<&Wave::theta>},
    {"phi", store_double<&Wave::phi>},
    {"beta", store_double<&Wave::beta>},
    {"lambda", store_double<&Wave::lambda>},
    {"sigmax", store_double<&Wave::sigmax>},
    {"sigmay", store_double<&Wave::sigmay>},
};

using Layer = struct_layer;
constexpr Key<Layer> kLayerKeys[] = {
    {"type", store_keyword<&Layer::t, kComponents>, kComponents.text},
    {"x", store_double<&Layer::x>},
    {"y", store_double<&Layer::y>},
    {"z", store_double<&Layer::z>},
    {"r", store_double<&Layer::r>},
    {"f", store_double<&Layer::f>},
    {"rin", store_double<&Layer::rin>},
    {"rout", store_double<&Layer::rout>},
    {"n", store_double<&Layer::n>},
    {"k", store_double<&Layer::k>},
    {"eps_r", store_double<&Layer::eps_r>},
    {"eps_i", store_double<&Layer::eps_i>},
    {"ne", store_double<&Layer::ne>},
    {"ke", store_double<&Layer::ke>},
    {"epse_r", store_double<&Layer::epse_r>},
    {"epse_i", store_double<&Layer::epse_i>},
    {"px", store_double<&Layer::px>},
    {"py", store_double<&Layer::py>},
    {"wx", store_double<&Layer::wx>},
    {"wy", store_double<&Layer::wy>},
    {"se", store_double<&Layer::se>},
    {"sm", store_double<&Layer::sm>},
};

// [fdtd] and [rcwa] have no keys and no closing tags here: they belong to other methods.
constexpr Tag kTags[] = {
    {"[global]", GLOBAL_S, NONE}, {"[wave]", WAVE_S, NONE},    {"[layer]", LAYER_S, NONE},
    {"[fdtd]", FDTD_S, NONE},     {"[rcwa]", RCWA_S, NONE},    {"[/global]", NONE, GLOBAL_E},
    {"[/wave]", NONE, WAVE_E},    {"[/layer]", NONE, LAYER_E},
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
