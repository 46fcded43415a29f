#include "system/conditions.h"

#include <algorithm>

#include "data/dataset.h"
#include "diagnostics.h"
#include "system/keys.h"
#include "system/stack_plan.h"
#include "system/suggest.h"

namespace {

// Throws Error unless the condition is true.
class Require {
 public:
  Require(const Description& d, const char* tag, int line)
      : where_(data::place(d.so.sysname, line) + ": " + tag + ": ") {}
  void operator()(bool condition, const std::string& text) const {
    if (!condition) diagnostics::fail(where_ + text);
  }

 private:
  std::string where_;
};

void require_global(const Description& d) {
  const Require require(d, "[global]", line_of(d.global_keys, "edge"));
  require(d.so.edge == 0 || 2 * d.so.edge <= std::min(d.so.x, d.so.y),
          "edge is wider than half the domain; make it smaller, or x and y larger");
}

// Checks that r, n and ne of a mode are full numbers; the keys do not.
void require_full_numbers(const Description& d, const GivenKeys& keys) {
  for (const GivenKey& key : keys) {
    if (key.name != "r" && key.name != "n" && key.name != "ne") continue;
    double value = 0;
    const Require require(d, "[wave]", key.line);
    require(read_real(key.value, value).kind == Reading::kRead,
            "value " + quoted(key.value) + " of " + quoted(key.name) + " is no number");
  }
}

// Checks that the keys that the kind uses have accepted values.
template <typename Record>
void require_values(const Description& d, const std::string& tag, const Record& record,
                    const GivenKeys& keys) {
  for (const GivenKey& key : keys)
    if (!key.refused.empty() && is_used(record, key.name))
      diagnostics::fail(data::place(d.so.sysname, key.line) + ": value " + quoted(key.value) +
                        " of " + quoted(key.name) + " in " + tag + " " + key.refused);
}

void require_wave(const Description& d, const struct_emfield& wave, const GivenKeys& keys) {
  const Require require(d, "[wave]", wave.line);
  require_values(d, "[wave]", wave, keys);
  if (wave.s == LP01) {
    require_full_numbers(d, keys);
    require(wave.r > 0, "shape = lp01 needs r, the radius of the core");
    require(wave.n > wave.ne && wave.ne > 0,
            "shape = lp01 needs n, of the core, above ne, around it");
  }
  require(wave.s != FIELD_FILE || !wave.file.empty(), "shape = file needs the key file");
  require(wave.s != FIELD_FILE || (wave.dx > 0) == (wave.dy > 0), "dx and dy go together");
}

void require_layer(const Description& d, std::size_t i, const LayerPlace& place) {
  const struct_layer& l = d.layers[i];
  const GivenKeys& keys = d.layer_keys[i];
  const Require require(d, "[layer]", l.line);
  require_values(d, "[layer]", l, keys);
  require(!l.over || i > 0, "over = 1 paints over the layer before it, and this is the first");
  require(!l.over || l.t != SCREEN, "a screen takes no slices and cannot be painted over others");
  if (l.t == GRIN) {
    require(l.r > 0, "type = grin needs r, its radius, above 0");
    require(l.g * l.r < 1, "the index of type = grin vanishes within r; g times r must be below 1");
  }
  if (l.t == SCREEN) {
    const bool is_round = is_given(keys, "r");
    const bool is_rectangular = is_given(keys, "wx") || is_given(keys, "wy");
    const bool is_file = !l.file.empty();
    require(is_round + is_rectangular + is_file <= 1,
            "a screen has one opening: r, or wx and wy, or file");
    require(is_round || is_rectangular || is_file || is_given(keys, "t"),
            "a screen needs its opening: r, or wx and wy, or file");
    require(!is_round || l.r > 0, "r of a screen must be above 0");
    require(!is_rectangular || (l.wx > 0 && l.wy > 0), "wx and wy of a screen must be above 0");
    require(!place.is_known || place.slab.start < d.so.nz, "the screen lies behind the domain");
  }
  require(l.t != INDEX_FILE || !l.file.empty(), "type = file needs the key file");
  require(!is_used(l, "dx") || (l.file_dx > 0) == (l.file_dy > 0), "dx and dy go together");
  require(l.duty == 0 || l.t != GRATING || l.px > 0, "duty needs px, the period");
}

void require_monitor(const Description& d, const Monitor& m, const GivenKeys& keys) {
  const Require require(d, "[monitor]", m.line);
  require(is_given(keys, "type"), "needs a type: field, beam, overlap or focus");
  require(!m.file.empty(), "needs a file");
  const auto require_axis = [&](const std::string& axis, const auto& at, const auto& begin,
                                const auto& end) {
    require(!begin || !end || *begin <= *end, axis + "1 is above " + axis + "2");
    require(m.type != MonitorType::kField || !at || (!begin && !end),
            axis + " is one plane and goes without " + axis + "1 and " + axis + "2");
  };
  require_axis("x", m.x, m.x1, m.x2);
  require_axis("y", m.y, m.y1, m.y2);
  require_axis("z", m.z, m.z1, m.z2);
  if (m.type != MonitorType::kOverlap) return;
  require(m.mode != Monitor::Mode::kGaussian || m.waist > 0, "mode = gaussian needs waist");
  require(m.mode != Monitor::Mode::kFile || !m.mode_file.empty(), "mode = file needs modefile");
  require((m.dx > 0) == (m.dy > 0), "dx and dy go together");
  if (m.mode == Monitor::Mode::kLp01) {
    require(m.r.has_value(), "mode = lp01 needs r, the radius of the core");
    require(m.n > m.ne && m.ne > 0, "mode = lp01 needs n, of the core, above ne, around it");
  }
}

}  // namespace

void require_sense(const Description& d) {
  require_global(d);
  for (std::size_t i = 0; i < d.waves.size(); ++i) require_wave(d, d.waves[i], d.wave_keys[i]);
  const std::vector<LayerPlace> places = plan_stack(d);
  for (std::size_t i = 0; i < d.layers.size(); ++i) require_layer(d, i, places[i]);
  for (std::size_t i = 0; i < d.monitors.size(); ++i)
    require_monitor(d, d.monitors[i], d.monitor_keys[i]);
}
