// Warnings about likely mistakes in the incident waves.
#include <cmath>
#include <iomanip>

#include "constants.h"
#include "diagnostics.h"
#include "system/lint_context.h"

namespace {

void advise_on_amplitude(const LintContext& scene, const struct_emfield& wave,
                         const GivenKeys& keys) {
  const auto warn = [&](const std::string& text) { scene.warn(wave.line, "[wave]", text); };
  if (!is_given(keys, "shape"))
    warn("has no shape and is random at each sample; give it shape = plane or gaussian");
  if (wave.amp == 0 && (wave.s != FIELD_FILE || is_given(keys, "amp")))
    warn("amp is 0: the wave is dark; give it amp = 1");
  if (wave.lambda == 0) warn("lambda is 0: the field is not finite");
  if (wave.lambda < 0) warn(joined("lambda = ", wave.lambda, " is negative"));
  if (wave.lambda > 0 && wave.lambda != scene.lambda && scene.lambda != 0)
    warn(joined("lambda = ", wave.lambda, " is not that of the run, ", scene.lambda,
                ", which the first wave decides"));
  const bool is_beam = wave.s == GAUSSIAN;
  if (is_beam && (wave.sigmax == 0 || wave.sigmay == 0))
    warn(joined(wave.sigmax == 0 ? "sigmax" : "sigmay",
                " is 0: the field is not finite; give both widths, or waist"));
}

// Warns of keys of another shape.
void advise_on_keys(const LintContext& scene, const struct_emfield& wave, const GivenKeys& keys) {
  for (const GivenKey& key : keys)
    if (!is_used(wave, key.name) && !is_default(key))
      scene.warn(key.line, "[wave]",
                 joined("shape = ", word_of(wave_keys(), "shape", wave, &struct_emfield::s),
                        " does not use ", key.name));
}

// radius: where the field has fallen to about 1/e.
void advise_on_place(const LintContext& scene, const struct_emfield& wave, const char* axis,
                     double center, double radius, double extent) {
  if (radius > extent / 2)
    scene.warn(wave.line, "[wave]",
               joined("the beam is ", 2 * radius, " wide along ", axis,
                      ", wider than the domain, which cuts it"));
  if (std::fabs(center) > extent / 2)
    scene.warn(wave.line, "[wave]",
               joined(axis, " = ", center, " is outside of the domain, which ends at ", extent / 2,
                      " from its middle"));
}

// The domain is periodic sideways. A plane wave is continuous at its sides if a whole number of
// cycles fits x and y.
void advise_on_direction(const LintContext& scene, const struct_emfield& wave) {
  const struct_sysOptions& so = scene.d.so;
  if (!(scene.entry > 0) || !(wave.lambda > 0) || so.edge > 0) return;
  const double theta = wave.theta * kPi / 180;
  const double phi = wave.phi * kPi / 180;
  const double across = wave.lambda / scene.entry;
  const double cycles_x = so.x / across * std::sin(theta) * std::cos(phi);
  const double cycles_y = so.y / across * std::sin(theta) * std::sin(phi);
  const double off = std::max(std::fabs(cycles_x - std::round(cycles_x)),
                              std::fabs(cycles_y - std::round(cycles_y)));
  if (!(off > 0.01)) return;  // a hundredth of a cycle: a step of 4 degrees at the sides

  const double turn = wave.theta < 0 ? -1 : 1;
  const double sx = so.x == 0 ? 0 : turn * std::round(cycles_x) * across / so.x;
  const double sy = so.y == 0 ? 0 : turn * std::round(cycles_y) * across / so.y;
  const double sine = std::hypot(sx, sy);
  std::string nearest;
  if (sine <= 1)
    nearest =
        joined(std::setprecision(9),
               "; the nearest direction that does has theta = ", turn * std::asin(sine) * 180 / kPi,
               ", phi = ", sine == 0 ? wave.phi : std::atan2(sy, sx) * 180 / kPi);
  scene.warn(wave.line, "[wave]",
             joined("the plane wave runs through ", cycles_x, " cycles along x and ", cycles_y,
                    " along y, no whole number, and does not meet itself at the sides") +
                 nearest);
}

}  // namespace

void advise_on_waves(const LintContext& scene) {
  const Description& d = scene.d;
  if (d.waves.empty())
    return diagnostics::warn(d.so.sysname + ": there is no [wave]; the field stays zero");
  for (std::size_t i = 0; i < scene.counted; ++i)
    scene.warn(d.waves[i].line, "[wave]",
               joined("is replaced by that of line ", d.waves[scene.counted].line,
                      "; give that one add = 1 to have both"));
  for (std::size_t i = scene.counted; i < d.waves.size(); ++i) {
    const struct_emfield& wave = d.waves[i];
    advise_on_keys(scene, wave, d.wave_keys[i]);
    advise_on_amplitude(scene, wave, d.wave_keys[i]);
    if (wave.s == PLANE) advise_on_direction(scene, wave);
    if (wave.s != GAUSSIAN && wave.s != LP01) continue;
    const bool is_mode = wave.s == LP01;
    const double to_waist = std::sqrt(kPi);  // of a sigma
    advise_on_place(scene, wave, "x", wave.x, is_mode ? wave.r : wave.sigmax * to_waist, d.so.x);
    advise_on_place(scene, wave, "y", wave.y, is_mode ? wave.r : wave.sigmay * to_waist, d.so.y);
  }
}
