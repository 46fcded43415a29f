// The tables of keys against the records, and the manual against the tables.
#include "system/keys.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

using Fields = std::map<std::string, double>;

// The fields by name, kept apart from the tables: what a key means is said once here and once
// there.
#define FIELDS(...) named(#__VA_ARGS__, __VA_ARGS__)
Fields named(const char* text, auto... values) {
  Fields fields;
  std::istringstream names(text);  // such as "l.x, l.y"
  const auto add = [&](double value) {
    std::string name;
    std::getline(names, name, ',');
    fields[name.substr(name.find('.') + 1)] = value;
  };
  (add(values), ...);
  return fields;
}

Fields fields(const struct_emfield& w) {
  return FIELDS(w.s, w.x, w.y, w.z, w.amp, w.lambda, w.theta, w.phi, w.beta, w.sigmax, w.sigmay);
}
Fields fields(const struct_layer& l) {
  return FIELDS(l.t, l.x, l.y, l.z, l.r, l.f, l.px, l.wx, l.py, l.wy, l.rin, l.rout, l.n, l.k, l.ne,
                l.ke, l.se, l.sm, l.eps_r, l.eps_i, l.epse_r, l.epse_i);
}
Fields fields(const struct_sysOptions& so) {
  return FIELDS(so.smooth, so.irradiance, so.energyflux, so.absorption, so.bidirectional,
                so.multithreaded, so.distributed, so.evanescent, so.efield, so.hfield,
                so.permittivity, so.permeability, so.iterations, so.threads, so.nodes, so.nx, so.ny,
                so.nz, so.x, so.y, so.z, so.scl, so.mth, so.p);
}

// The keys whose field has another name.
const std::map<std::string, std::string> kFieldNames = {
    {"shape", "s"},        {"type", "t"},       {"scale", "scl"},   {"method", "mth"},
    {"polarization", "p"}, {"calcE", "efield"}, {"calcH", "hfield"}};

using Words = std::vector<std::string>;
// In the order of the enumerators, the first of which is 0, but VWPM 1.
const std::map<std::string, Words> kKeywords = {
    {"scale", {"m", "dm", "cm", "mm", "um", "nm"}},
    {"method", {"vwpm", "wpm", "vbpm", "bpm", "fdtd", "rcwa"}},
    {"polarization", {"na", "te", "tm"}},
    {"shape", {"random", "plane", "gaussian"}},
    {"type",
     {"homog", "grating", "waveguide", "taper", "lens", "asphere", "splitter", "mzehnder"}}};

// A key changes its own field and no other, and every field has a key.
template <typename Record>
void expect_own_fields(std::span<const Key<Record>> keys) {
  std::set<std::string> filled;
  for (const Key<Record>& key : keys) {
    const std::string name(key.name);
    const std::string field = kFieldNames.contains(name) ? kFieldNames.at(name) : name;
    filled.insert(field);
    const bool is_number = key.keywords.empty();
    double meaning = name == "method" ? VWPM : 0;
    for (const std::string& word : is_number ? Words{"0", "1"} : kKeywords.at(name)) {
      Record record;
      Fields expected = fields(record);
      expected.at(field) = meaning++;
      EXPECT_TRUE(key.store(record, word)) << word;
      for (const char* wrong : {"Na", "tem", "pm", "blank", "PLANE"})
        EXPECT_TRUE(is_number || !key.store(record, wrong)) << wrong;
      EXPECT_EQ(fields(record), expected) << name;
    }
  }
  EXPECT_EQ(filled.size(), fields(Record()).size());
}

TEST(Keys, EveryKeyStoresIntoItsOwnField) {
  expect_own_fields(wave_keys());
  expect_own_fields(layer_keys());
  expect_own_fields(global_keys());
  EXPECT_EQ(global_keys().size(), fields(struct_sysOptions()).size() + 2);  // calcE and calcH
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
  add(global_keys()), add(wave_keys()), add(layer_keys());
  for (const Tag& tag : tags()) names.emplace_back(tag.text);
  for (const std::string& name : names)
    EXPECT_NE(manual.find('`' + name + '`'), std::string::npos) << name;
}

}  // namespace
