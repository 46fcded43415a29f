#include "system/index_stack.h"

#include <algorithm>
#include <string>

#include "data/dataset.h"
#include "diagnostics.h"
#include "log.h"
#include "system/rule.h"

namespace {

// A component that paints, at its place.
struct Placed {
  Slab slab;
  std::unique_ptr<Rule> rule;
  bool is_over;  // leaves some of a slice unchanged
};

void warn_of_unpainted(const struct_sysOptions& so, const std::vector<Placed>& components) {
  std::vector<bool> is_painted(static_cast<std::size_t>(std::max(so.nz, 0)), false);
  for (const Placed& c : components)
    for (int iz = std::max(c.slab.first, 0); iz < std::min(c.slab.end, so.nz); ++iz)
      if (!c.is_over) is_painted[static_cast<std::size_t>(iz)] = true;
  const auto count = std::count(is_painted.begin(), is_painted.end(), false);
  if (count > 0)
    diagnostics::warn(so.sysname + ": the layers leave " + std::to_string(count) + " of " +
                      std::to_string(so.nz) + " slices unwritten; they hold index 0");
}

[[noreturn]] void fail_at(const struct_sysOptions& so, const struct_layer& l,
                          const std::string& text) {
  diagnostics::fail(data::place(so.sysname, l.line) + ": [layer]: " + text);
}

void require_in_domain(const struct_sysOptions& so, const struct_layer& screen) {
  if (so.izlast >= 0 && so.izlast < so.nz) return;
  fail_at(so, screen,
          "the screen would stand at slice " + std::to_string(so.izlast) + " of a domain of " +
              std::to_string(so.nz) + "; make the layers before it thinner or the domain deeper");
}

}  // namespace

struct IndexStack::Inside {
  explicit Inside(const struct_sysOptions& so) : grid(so), frame(so) {}

  // The components of slice k in the order of painting: the last one that fills it, then those
  // painted over it.
  std::vector<const Placed*> at(int k) const {
    std::vector<const Placed*> deciding;
    for (const Placed& c : components) {
      if (!c.slab.holds(k)) continue;
      if (!c.is_over) deciding.clear();
      deciding.push_back(&c);
    }
    return deciding;
  }

  void number_stretches() {
    Signature here;
    Signature before;
    for (int k = 0; k < frame.nz; ++k) {
      here.clear();
      for (const Placed* c : at(k)) c->rule->sign(k, here);
      const bool is_same = k > 0 && frame.is_square() && here == before;
      stretches.push_back(k == 0 ? 0 : stretches.back() + (is_same ? 0 : 1));
      std::swap(here, before);
    }
  }

  void paint(cpx* N, const Window& window, bool clears) const {
    const Canvas canvas(N, frame, window);
    if (frame.is_square())
      paint_slices(N, canvas, window, clears);
    else
      paint_components(N, canvas, window, clears);
  }

 private:
  void paint_slices(cpx* N, const Canvas& canvas, const Window& window, bool clears) const {
    const std::size_t plane =
        static_cast<std::size_t>(frame.nx) * static_cast<std::size_t>(window.rows());
    for (int k = window.z_begin; k < window.z_end; ++k, N += plane) {
      const std::vector<const Placed*> deciding = at(k);
      const bool is_filled = !deciding.empty() && !deciding.front()->is_over;
      if (k > window.z_begin && (is_filled || clears) && is_same_as_before(k)) {
        std::copy_n(N - plane, plane, N);
        continue;
      }
      if (!is_filled && clears) std::fill_n(N, plane, cpx(0.0));
      for (const Placed* c : deciding) c->rule->paint(k, canvas);
    }
  }

  [[nodiscard]] bool is_same_as_before(int k) const {
    return k > 0 && k < frame.nz &&
           stretches[static_cast<std::size_t>(k)] == stretches[static_cast<std::size_t>(k - 1)];
  }

  // The order of writing matters if rows overlap or extend into later slices.
  void paint_components(cpx* N, const Canvas& canvas, const Window& window, bool clears) const {
    const std::int64_t count =
        std::int64_t{frame.nx} * window.rows() * std::int64_t{window.slices()};
    if (clears && count > 0) std::fill_n(N, count, cpx(0.0));
    for (const Placed& c : components)
      for (int iz = c.slab.first; iz < c.slab.end; ++iz) c.rule->paint(iz, canvas);
  }

 public:
  Grid grid;
  Frame frame;
  std::vector<Placed> components;
  std::vector<int> stretches;  // uniform segment of each slice
  std::vector<Screen> screens;
  std::vector<LayerPlace> places;
};

IndexStack::IndexStack(struct_sysOptions& so, const std::vector<struct_layer>& layers,
                       bool is_quiet)
    : inside_(std::make_unique<Inside>(so)) {
  const Log log(is_quiet);
  LayerStack stack(so, true);
  so.izlast = 0;
  int number = 0;
  for (const struct_layer& l : layers) {
    ++number;
    const Kind* kind = kind_of(l.t);
    if (kind == nullptr) {
      log << "\t\t\t\t\033[31mUnknown component\033[0m" << std::endl;
      inside_->places.push_back(stack.add(l));
      continue;
    }
    log << "\t\t\t\t" << kind->line << std::endl;
    if (l.t == SCREEN) {
      require_in_domain(so, l);
      inside_->screens.push_back({so.izlast, l});
      inside_->places.push_back(stack.add(l));
      continue;
    }
    if (l.over && !stack.has_base())
      fail_at(so, l, "over = 1 paints over the layer before it, and there is none");
    inside_->places.push_back(stack.add(l));
    const Slab& slab = inside_->places.back().slab;
    if (l.t == GRATING) require_grating_periods(so, slab, l, number);
    so.izlast = stack.next_slice();
    if (kind->rule != nullptr && slab.first < slab.end)
      inside_->components.push_back({slab, kind->rule(so, slab, l), l.over});
  }
  warn_of_unpainted(so, inside_->components);
  inside_->number_stretches();
}

IndexStack::~IndexStack() = default;

void IndexStack::paint(cpx* N, const Window& window) const {
  inside_->paint(N, window, true);
}

void IndexStack::paint_onto(cpx* N, const Window& window) const {
  inside_->paint(N, window, false);
}

Window IndexStack::whole() const {
  return {0, inside_->frame.ny, 0, inside_->frame.nz};
}

int IndexStack::stretch(int k) const {
  const bool is_inside = k >= 0 && k < static_cast<int>(inside_->stretches.size());
  return is_inside ? inside_->stretches[static_cast<std::size_t>(k)] : -1;
}

const std::vector<Screen>& IndexStack::screens() const {
  return inside_->screens;
}

const std::vector<LayerPlace>& IndexStack::places() const {
  return inside_->places;
}

const Grid& IndexStack::grid() const {
  return inside_->grid;
}
