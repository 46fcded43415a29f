// Warnings about likely mistakes in the layers.
#include <algorithm>
#include <cmath>
#include <string_view>

#include "diagnostics.h"
#include "system/keys.h"
#include "system/lint_context.h"

namespace {

using Names = std::vector<std::string_view>;

bool holds(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool is_material_key(std::string_view key) {
  return holds({"n", "k", "ne", "ke", "eps_r", "eps_i", "epse_r", "epse_i"}, key);
}

// Whether this key of the layer has an effect.
bool has_effect(const struct_layer& l, bool by_permittivity, std::string_view key) {
  if (!is_used(l, key)) return false;
  const bool is_second = holds({"ne", "ke", "epse_r", "epse_i"}, key);
  return !is_material_key(key) ||
         (key.starts_with("eps") == by_permittivity && !(is_second && l.over));
}

void advise_on_keys(const LintContext& scene, std::size_t i) {
  const struct_layer& l = scene.d.layers[i];
  std::string unused;
  bool is_material = false;
  Names named;
  for (const GivenKey& key : scene.d.layer_keys[i]) {
    if (has_effect(l, scene.d.by_permittivity[i], key.name) || is_default(key)) continue;
    if (holds(named, key.name)) continue;
    named.push_back(key.name);
    is_material = is_material || is_material_key(key.name);
    unused += (unused.empty() ? "" : ", ") + std::string(key.name);
  }
  if (unused.empty()) return;
  const char* direction =
      scene.d.by_permittivity[i] ? " with permittivity = 1" : " with permittivity = 0";
  scene.warn(l.line, "[layer]",
             joined("type = ", word_of(layer_keys(), "type", l, &struct_layer::t),
                    l.over ? " with over = 1" : "", " does not use ", unused,
                    is_material ? direction : ""));
}

void advise_on_materials(const LintContext& scene, std::size_t i) {
  const struct_layer& l = scene.d.layers[i];
  if (scene.places[i].slab.taken <= 0) return;
  const auto is_sound = [](double n, double k) {
    return std::isfinite(n) && std::isfinite(k) && n >= 0 && (n != 0 || k != 0);
  };
  const bool is_eps = scene.d.by_permittivity[i];
  if (is_used(l, "n") && !is_sound(l.n, l.k))
    scene.warn(l.line, "[layer]",
               joined("has index ", l.n, ", in which no field makes sense; give it ",
                      is_eps ? "eps_r" : "n"));
  if (is_used(l, "ne") && !l.over && !is_sound(l.ne, l.ke))
    scene.warn(l.line, "[layer]",
               joined("has index ", l.ne, " around it, in which no field makes sense; give it ",
                      is_eps ? "epse_r" : "ne"));
  const bool is_flat = (l.t == WGUIDE || l.t == LENS) && l.r == 0;
  const bool is_thin = (l.t == TAPER || l.t == SPLITTER) && l.rin == 0 && l.rout == 0;
  if (is_flat || is_thin)
    scene.warn(l.line, "[layer]",
               is_flat ? "r is 0: it has no body" : "rin and rout are 0: it has no core");
}

void advise_on_thickness(const LintContext& scene, std::size_t i) {
  const LayerPlace& place = scene.places[i];
  const struct_layer& l = scene.d.layers[i];
  if (!place.is_stacked || (l.t == INDEX_FILE && l.z == 0)) return;
  if (!(l.z > 0))
    return scene.warn(l.line, "[layer]",
                      l.z < 0 ? "z is negative: the next layer begins before this one"
                              : "z is 0: the layer has no thickness and vanishes");
  const bool is_whole = place.slab.start + place.wanted <= scene.d.so.nz;
  if (is_whole && place.wanted - place.thickness > 0.1)
    scene.warn(l.line, "[layer]",
               joined("z = ", l.z, " is ", place.thickness, " slices and takes ", place.wanted,
                      "; choose nz so that dz divides it, and all behind it lies where it should"));
}

// Warns of slices that layers need beyond the domain, unless rounding alone causes them.
void advise_on_end(const LintContext& scene) {
  const int nz = scene.d.so.nz;
  double total = 0;
  for (const LayerPlace& place : scene.places) {
    if (!place.is_known || place.thickness < 0) return;
    if (place.is_stacked) total += place.thickness;
  }
  if (nz < 1 || !(total > nz + 0.1)) return;
  int cut_line = 0;
  double beyond = 0;
  for (std::size_t i = 0; i < scene.places.size(); ++i) {
    const LayerPlace& place = scene.places[i];
    if (!place.is_stacked || place.slab.taken >= place.wanted) continue;
    if (cut_line == 0) cut_line = scene.d.layers[i].line;
    beyond += place.wanted - place.slab.taken;
  }
  scene.warn(cut_line, "[layer]",
             joined("the stack is thicker than the domain: from this layer on it is cut, by ",
                    beyond, " slices in all"));
}

}  // namespace

void advise_on_layers(const LintContext& scene) {
  for (std::size_t i = 0; i < scene.d.layers.size(); ++i) {
    advise_on_keys(scene, i);
    advise_on_thickness(scene, i);
    advise_on_materials(scene, i);
  }
  advise_on_end(scene);
}
