// The tables of keys against the records, and the manual against the tables.
#include "system/keys.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>

#include "system/parsing.h"

namespace {

// The fields by name, kept apart from the tables: what a key means is said once here and once
// there.
// clang-format off
#define W(name) {#name, &struct_emfield::name}
const std::map<std::string, double struct_emfield::*> kWaveNumbers = {
    W(x), W(y), W(z), W(amp), W(lambda), W(theta), W(phi), W(beta), W(sigmax), W(sigmay)};
#define L(name) {#name, &struct_layer::name}
const std::map<std::string, double struct_layer::*> kLayerNumbers = {
    L(x), L(y), L(z), L(r), L(f), L(px), L(wx), L(py), L(wy), L(rin), L(rout), L(n), L(k), L(ne),
    L(ke), L(se), L(sm)};
const std::map<std::string, double struct_layer::*> kPermittivities = {
    L(eps_r), L(eps_i), L(epse_r), L(epse_i)};
#define G(name) {#name, &struct_sysOptions::name}
const std::map<std::string, bool struct_sysOptions::*> kFlags = {
    G(smooth), G(irradiance), G(energyflux), G(absorption), G(bidirectional), G(multithreaded),
    G(distributed), G(evanescent), G(efield), G(hfield), G(permittivity), G(permeability),
    {"calcE", &struct_sysOptions::efield}, {"calcH", &struct_sysOptions::hfield}};
const std::map<std::string, int struct_sysOptions::*> kCounts = {
    G(iterations), G(threads), G(nodes), G(nx), G(ny), G(nz)};
const std::map<std::string, double struct_sysOptions::*> kExtents = {G(x), G(y), G(z)};
// clang-format on

// Every field a number of its own, so that two keys which change places are seen.
std::string numbered(const auto& fields) {
  std::string text;
  for (double value = 0.25; const auto& field : fields)
    text += field.first + " = " + std::to_string(++value) + "\n";
  return text;
}

void expect_numbered(const auto& record, const auto& fields, double value = 0.25) {
  for (const auto& [name, member] : fields) EXPECT_EQ(record.*member, ++value) << name;
}

void expect_names(const auto& keys, const auto&... fields) {
  std::multiset<std::string> names, expected;
  for (const auto& key : keys)
    if (key.keywords.empty()) names.emplace(key.name);
  const auto add = [&](const auto& map) {
    for (const auto& field : map) expected.insert(field.first);
  };
  (add(fields), ...);
  EXPECT_EQ(names, expected);
}

TEST(Keys, EveryNumberReachesItsField) {
  expect_names(wave_keys(), kWaveNumbers);
  expect_names(layer_keys(), kLayerNumbers, kPermittivities);
  expect_names(global_keys(), kFlags, kCounts, kExtents);

  const Parsed parsed("[wave]\n" + numbered(kWaveNumbers) + "[/wave]\n[layer]\n" +
                      numbered(kLayerNumbers) + "[/layer]\n[global]\npermittivity = 1\n[layer]\n" +
                      numbered(kPermittivities) + "[/layer]\n[global]\n" + numbered(kCounts));
  EXPECT_EQ(parsed.warnings, "");
  expect_numbered(parsed.waves.at(0), kWaveNumbers);
  expect_numbered(parsed.layers.at(0), kLayerNumbers);
  expect_numbered(parsed.layers.at(1), kPermittivities);
  expect_numbered(parsed.so, kCounts, 0);  // whole: the fraction is lost, also of the extents
  expect_numbered(Parsed("[global]\n" + numbered(kExtents)).so, kExtents, 0);
}

// True is the text 1 and nothing else; a flag changes itself alone.
TEST(Keys, EveryFlagReachesItsField) {
  const struct_sysOptions initial;
  for (const auto& [name, member] : kFlags)
    for (const std::string value : {"1", "0", "true", "01", "1x"}) {
      const Parsed parsed("[global]\n" + name + " = " + value + "\n");
      for (const auto& [other, its] : kFlags)
        EXPECT_EQ(parsed.so.*its, its == member ? value == "1" : initial.*its) << name << other;
    }
  EXPECT_TRUE(Parsed("[global]\nefield = 0\ncalcE = 1\n").so.efield);  // the later line wins
}

TEST(Keys, EveryKeywordHasItsMeaningAndAnUnknownOneIsIgnored) {
  struct Words {
    const char *section, *key, *words;  // in the order of the enumerators
    int first;
  };
  for (const Words& row :
       {Words{"global", "scale", "m dm cm mm um nm", M},
        {"global", "method", "vwpm wpm vbpm bpm fdtd rcwa", VWPM},
        {"global", "polarization", "na te tm", NA},
        {"wave", "shape", "random plane gaussian", RANDOM},
        {"layer", "type", "homog grating waveguide taper lens asphere splitter mzehnder", HOMOG}}) {
    std::istringstream words(row.words);
    int meaning = row.first;
    for (std::string word; words >> word; ++meaning)
      // Case-sensitive, compared whole; the field stays.
      for (const std::string wrong : {"Na", "tem", "pm", "blank", "PLANE"}) {
        std::ostringstream text;
        text << "[" << row.section << "]\n"
             << row.key << " = " << word << "\n"
             << row.key << " = " << wrong << "\n[/" << row.section << "]\n";
        const Parsed p(text.str());
        const std::map<std::string, int> meanings = {
            {"scale", p.so.scl},
            {"method", p.so.mth},
            {"polarization", p.so.p},
            {"shape", p.waves.empty() ? -1 : p.waves[0].s},
            {"type", p.layers.empty() ? -1 : p.layers[0].t}};
        EXPECT_EQ(meanings.at(row.key), meaning) << word;
        const std::string warning = "line 3: unknown value '" + wrong + "' of '" + row.key + "'";
        EXPECT_NE(p.warnings.find(warning), std::string::npos) << p.warnings;
      }
  }
}

TEST(Manual, NamesEveryTagKeyAndKeyword) {
  std::ifstream file(std::string(ZERITH_SOURCE_DIR) + "/docs/configuration.md");
  ASSERT_TRUE(file.good());
  const std::string manual(std::istreambuf_iterator<char>(file), {});
  const auto expect_named = [&](std::string_view name) {
    EXPECT_NE(manual.find('`' + std::string(name) + '`'), std::string::npos) << name;
  };
  const auto expect_all = [&](const auto& keys) {
    for (const auto& key : keys) {
      expect_named(key.name);
      for (const std::string_view keyword : key.keywords) expect_named(keyword);
    }
  };
  expect_all(global_keys());
  expect_all(wave_keys());
  expect_all(layer_keys());
  for (const Tag& tag : tags()) expect_named(tag.text);
}

}  // namespace
