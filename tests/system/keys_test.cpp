// The tables of keys against the records, and the manual against the tables.
#include "system/keys.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace {

using Fields = std::map<std::string, std::string>;

std::string text(const std::string& value) {
  return value;
}
std::string text(double value) {
  std::ostringstream stream;
  stream << value;
  return stream.str();
}
std::string text(const std::optional<double>& value) {
  return value ? text(*value) : "none";
}
template <typename Enum>
requires std::is_enum_v<Enum> std::string text(Enum value) {
  return text(static_cast<double>(value));
}

// The fields by name, kept apart from the tables: what a key means is said once here and once
// there.
#define FIELDS(...) named(#__VA_ARGS__, __VA_ARGS__)
Fields named(const char* list, const auto&... values) {
  Fields fields;
  std::istringstream names(list);  // such as "l.x, l.y"
  const auto add = [&](const std::string& value) {
    std::string name;
    std::getline(names, name, ',');
    fields[name.substr(name.find('.') + 1)] = value;
  };
  (add(text(values)), ...);
  return fields;
}

Fields fields(const struct_emfield& w) {
  return FIELDS(w.s, w.x, w.y, w.z, w.amp, w.lambda, w.theta, w.phi, w.beta, w.sigmax, w.sigmay,
                w.add, w.r, w.n, w.ne, w.file, w.dataset, w.dx, w.dy);
}
Fields fields(const struct_layer& l) {
  return FIELDS(l.t, l.x, l.y, l.z, l.r, l.f, l.px, l.wx, l.py, l.wy, l.rin, l.rout, l.n, l.k, l.ne,
                l.ke, l.se, l.sm, l.eps_r, l.eps_i, l.epse_r, l.epse_i, l.levels, l.offsetx,
                l.offsety, l.tiltx, l.tilty, l.over, l.g, l.duty, l.transmission, l.file, l.dataset,
                l.file_dx, l.file_dy, l.file_dz, l.interpolate);
}
Fields fields(const struct_sysOptions& so) {
  return FIELDS(so.smooth, so.irradiance, so.energyflux, so.absorption, so.bidirectional,
                so.multithreaded, so.distributed, so.evanescent, so.efield, so.hfield,
                so.permittivity, so.permeability, so.iterations, so.threads, so.nodes, so.nx, so.ny,
                so.nz, so.x, so.y, so.z, so.scl, so.mth, so.p, so.edge, so.trim);
}
Fields fields(const Monitor& m) {
  return FIELDS(m.type, m.file, m.every, m.x, m.y, m.z, m.x1, m.x2, m.y1, m.y2, m.z1, m.z2,
                m.is_single, m.r, m.mode, m.waist, m.tiltx, m.tilty, m.n, m.ne, m.mode_file,
                m.dataset, m.dx, m.dy);
}

// The keys whose field has another name.
const std::map<std::string, std::string> kFieldNames = {
    {"shape", "s"},        {"scale", "scl"},          {"method", "mth"},
    {"polarization", "p"}, {"calcE", "efield"},       {"calcH", "hfield"},
    {"t", "transmission"}, {"modefile", "mode_file"}, {"precision", "is_single"}};

// A layer has offsets of its own named dx, dy, dz, and its type is t.
std::string field_of(const std::string& key, const Fields& known) {
  if (kFieldNames.contains(key)) return kFieldNames.at(key);
  if (known.contains(key)) return key;
  return key == "type" ? "t" : "file_" + key;
}

using Words = std::vector<std::string>;
// In the order of the enumerators, the first of which is 0, but VWPM 1.
const std::map<std::string, Words> kKeywords = {
    {"scale", {"m", "dm", "cm", "mm", "um", "nm"}},
    {"method", {"vwpm", "wpm", "vbpm", "bpm", "fdtd", "rcwa"}},
    {"polarization", {"na", "te", "tm"}},
    {"shape", {"random", "plane", "gaussian", "lp01", "file"}},
    {"precision", {"double", "single"}},
    {"mode", {"input", "gaussian", "lp01", "file"}},
    {"type",
     {"homog", "grating", "waveguide", "taper", "lens", "asphere", "splitter", "mzehnder", "grin",
      "screen", "file"}}};
const Words kMonitorTypes = {"field", "beam", "overlap", "focus"};

// A key changes its own field and no other, and every field has a key.
template <typename Record>
void expect_own_fields(std::span<const Key<Record>> keys, const Words& types,
                       const Words& special) {
  std::set<std::string> filled;
  for (const Key<Record>& key : keys) {
    const std::string name(key.name);
    if (std::find(special.begin(), special.end(), name) != special.end()) continue;
    const std::string field = field_of(name, fields(Record()));
    filled.insert(field);
    int meaning = name == "method" ? VWPM : 0;
    if (!key.keywords.empty())
      for (const std::string& word : name == "type" ? types : kKeywords.at(name)) {
        Record record;
        Fields expected = fields(record);
        expected.at(field) = text(meaning++);
        EXPECT_EQ(key.store(record, word).kind, Reading::kRead) << word;
        for (const char* wrong : {"Na", "tem", "pm", "blank", "PLANE"})
          EXPECT_EQ(key.store(record, wrong).kind, Reading::kUnknownWord) << wrong;
        EXPECT_EQ(fields(record), expected) << name;
      }
    int read = 0;
    for (const std::string number : {"0", "0.5", "1"}) {
      Record record;
      Fields expected = fields(record);
      const Reading reading = key.store(record, number);
      if (!key.keywords.empty() || reading.kind == Reading::kPartly) continue;
      if (reading.kind == Reading::kRead) expected.at(field) = number, ++read;
      EXPECT_EQ(fields(record), expected) << name << " = " << number;  // refused: as it was
    }
    EXPECT_TRUE(read > 0 || !key.keywords.empty()) << name;
  }
  EXPECT_EQ(filled.size(), fields(Record()).size());
}

TEST(Keys, EveryKeyStoresIntoItsOwnField) {
  expect_own_fields(wave_keys(), {}, {"waist", "waistx", "waisty"});
  expect_own_fields(layer_keys(), kKeywords.at("type"), {});
  expect_own_fields(global_keys(), {}, {});
  expect_own_fields(monitor_keys(), kMonitorTypes, {"save"});
  EXPECT_EQ(global_keys().size(), fields(struct_sysOptions()).size() + 2);  // calcE and calcH
}

template <typename Record>
Reading store(std::span<const Key<Record>> keys, std::string_view name, Record& record,
              const std::string& value) {
  for (const Key<Record>& key : keys)
    if (key.name == name) return key.store(record, value);
  return {Reading::kUnknownWord};
}

// The field of a Gaussian wave at its waist is 1/e of the peak: exp(-(waist^2/sigma^2)/pi).
TEST(Keys, AWaistIsWhereTheFieldIsOneOverE) {
  struct_emfield wave;
  store(wave_keys(), "waist", wave, "2000");
  store(wave_keys(), "waisty", wave, "500");
  EXPECT_NEAR(std::exp(-(2000 / wave.sigmax) * (2000 / wave.sigmax) / 3.14159265), std::exp(-1),
              1e-15);
  EXPECT_NEAR(wave.sigmax / wave.sigmay, 4, 1e-15);
  store(wave_keys(), "waistx", wave, "1000");
  EXPECT_NEAR(wave.sigmax / wave.sigmay, 2, 1e-15);
  EXPECT_EQ(store(wave_keys(), "waistx", wave, "0").kind, Reading::kRefused);
}

TEST(Keys, SavesWhatIsListedAndNothingElse) {
  const std::pair<const char*, Words> kLists[] = {
      {"E", {"E"}}, {"flux,index", {"flux", "index"}}, {"intensity,E,E", {"E", "intensity"}}};
  for (const auto& [list, expected] : kLists) {
    Monitor m;
    EXPECT_EQ(store(monitor_keys(), "save", m, list).kind, Reading::kRead);
    Words saved;
    for (const auto& [is_saved, word] :
         {std::pair(m.saves_E, "E"), std::pair(m.saves_flux, "flux"),
          std::pair(m.saves_index, "index"), std::pair(m.saves_intensity, "intensity")})
      if (is_saved) saved.emplace_back(word);
    EXPECT_EQ(saved, expected) << list;
  }
  Monitor m;
  for (const char* list : {"E,", ",", "e", "E;flux"})
    EXPECT_EQ(store(monitor_keys(), "save", m, list).kind, Reading::kRefused) << list;
  EXPECT_TRUE(m.saves_E && !m.saves_flux);
}

TEST(Manual, NamesEveryTagKeyAndKeyword) {
  std::ifstream file(std::string(ZERITH_SOURCE_DIR) + "/docs/configuration.md");
  const std::string manual(std::istreambuf_iterator<char>(file), {});
  Words names;
  const auto add = [&](const auto& keys) {
    for (const auto& key : keys) {
      names.emplace_back(key.name);
      names.insert(names.end(), key.keywords.begin(), key.keywords.end());
    }
  };
  add(global_keys()), add(wave_keys()), add(layer_keys()), add(monitor_keys());
  for (const Tag& tag : tags()) names.emplace_back(tag.text);
  for (const std::string& name : names)
    EXPECT_NE(manual.find('`' + name + '`'), std::string::npos) << name;
}

// The man page lists the words of these keys in the order of the tables.
TEST(ManPage, ListsLayerKindsWaveShapesAndMonitors) {
  std::ifstream file(std::string(ZERITH_SOURCE_DIR) + "/docs/zerith.1");
  const std::string page(std::istreambuf_iterator<char>(file), {});
  const auto expect_list = [&page](const auto& keys, std::string_view name) {
    for (const auto& key : keys) {
      if (key.name != name) continue;
      std::string list;
      for (std::size_t i = 0; i < key.keywords.size(); ++i) {
        if (i > 0) list += i + 1 < key.keywords.size() ? " \", \" " : " \" or \" ";
        list += key.keywords[i];
      }
      EXPECT_NE(page.find(".RB ( " + list + " )"), std::string::npos) << list;
    }
  };
  expect_list(wave_keys(), "shape"), expect_list(layer_keys(), "type");
  expect_list(monitor_keys(), "type");
}

}  // namespace
