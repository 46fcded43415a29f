#include "system/advice.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "data/dataset.h"
#include "diagnostics.h"
#include "system/keys.h"
#include "system/lint_context.h"

// Whether the value is 0, the default, and the key accepts it.
bool is_default(const GivenKey& key) {
  double value = 0;
  return read_real(key.value, value).kind == Reading::kRead && value == 0 && key.refused.empty();
}

bool varies_sideways(const struct_layer& l) {
  if (l.t == HOMOG) return false;
  return l.over || l.t == GRIN || l.t == INDEX_FILE ||
         (is_used(l, "ne") && (l.n != l.ne || l.k != l.ke));
}

LintContext::LintContext(const Description& description)
    : d(description),
      places(plan_stack(description)),
      lambda(vacuum_wavelength(description.waves, 1)) {
  for (std::size_t i = 0; i < d.waves.size(); ++i)
    if (!d.waves[i].add) counted = i;
  bool is_uniform = true;
  for (std::size_t i = 0; i < d.layers.size(); ++i) {
    const struct_layer& l = d.layers[i];
    if (places[i].slab.taken <= 0) continue;
    if (is_used(l, "n")) densest = std::max(densest, l.n);
    if (is_used(l, "ne") && !l.over) densest = std::max(densest, l.ne);
    if (places[i].slab.start != 0) continue;
    is_uniform = is_uniform && places[i].is_known && !varies_sideways(l);
    entry = l.n;
  }
  if (!is_uniform) entry = 0;
}

void LintContext::warn(int line, const char* tag, const std::string& text) const {
  diagnostics::warn(data::place(d.so.sysname, line) + ": " + tag + ": " + text);
}

namespace {

// Tolerance: rounding does not violate a bound that is just met.
constexpr double kSlack = 1 + 1e-9;

// Checks extents, samples and polarization.
void advise_on_domain(const LintContext& scene) {
  const struct_sysOptions& so = scene.d.so;
  const GivenKeys& keys = scene.d.global_keys;
  for (const auto& [name, extent] :
       {std::pair("x", so.x), std::pair("y", so.y), std::pair("z", so.z)})
    if (!(extent > 0))
      scene.warn(line_of(keys, name), "[global]",
                 joined(name, " = ", extent, ": the domain has no extent there"));
  for (const auto& [name, samples] :
       {std::pair("nx", so.nx), std::pair("ny", so.ny), std::pair("nz", so.nz)})
    if (samples == 0)
      scene.warn(line_of(keys, name), "[global]",
                 joined(name, " is 0: there is nothing to compute"));
  if (!is_given(keys, "polarization"))
    scene.warn(0, "[global]",
               "has no polarization, and waves pass every face in full; give it te, tm or na");
}

void advise_on_spacing(const LintContext& scene, const std::string& axis, int samples,
                       double extent, double spacing) {
  const double limit = scene.lambda / (2 * scene.densest);
  if (samples <= 1 || !(spacing > limit * kSlack)) return;
  scene.warn(
      line_of(scene.d.global_keys, "n" + axis), "[global]",
      joined("d", axis, " = ", spacing, " is above half a wavelength in the densest medium, ",
             limit, ": steep waves are missing; make n", axis, " at least ",
             std::ceil(extent / limit / kSlack)));
}

// Phase masks must be thin if the index varies sideways.
void advise_on_steps(const LintContext& scene) {
  const struct_sysOptions& so = scene.d.so;
  for (std::size_t i = 0; i < scene.d.layers.size(); ++i) {
    const struct_layer& l = scene.d.layers[i];
    if (scene.places[i].slab.taken <= 0 || !varies_sideways(l) || !is_used(l, "n")) continue;
    const double limit = scene.lambda / std::max(l.n, l.over ? 0 : l.ne);
    if (!(so.dz > limit * kSlack)) continue;
    return scene.warn(
        l.line, "[layer]",
        joined("the index varies sideways here, and dz = ", so.dz, " is above a wavelength, ",
               limit, "; make nz at least ", std::ceil(so.z / limit / kSlack)));
  }
}

}  // namespace

void advise(const Description& d) {
  const LintContext scene(d);
  advise_on_domain(scene);
  advise_on_waves(scene);
  if (scene.lambda > 0 && scene.densest > 0) {
    advise_on_spacing(scene, "x", d.so.nx, d.so.x, d.so.dx);
    advise_on_spacing(scene, "y", d.so.ny, d.so.y, d.so.dy);
    advise_on_steps(scene);
  }
  advise_on_layers(scene);
}
