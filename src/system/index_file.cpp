#include "system/index_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

#include "diagnostics.h"
#include "system/mix.h"
#include "system/rule.h"

namespace {

constexpr int kLevels = 256;  // if the layer gives none

// The position of a sample along an axis of the file: between two of its samples, or at one.
struct Between {
  int lower = 0, upper = 0;
  double weight = 0;  // of the upper one
  bool is_within = true;
};

// Beyond the file its outermost sample continues. is_within includes half a sample around it.
Between place_between(double place, int n, bool interpolates) {
  Between found;
  found.is_within = place >= -0.5 && place <= n - 0.5;
  const double inside = std::clamp(interpolates ? place : std::nearbyint(place), 0.0, n - 1.0);
  found.lower = static_cast<int>(inside);
  found.weight = inside - found.lower;
  found.upper = found.weight > 0 ? found.lower + 1 : found.lower;
  return found;
}

class FileRule : public Rule {
 public:
  FileRule(const struct_sysOptions& so, const Slab& slab, const struct_layer& l)
      : frame_(so),
        start_(slab.start),
        interpolates_(l.interpolate),
        is_over_(l.over),
        volume_(so, l),
        palette_(levels_of(l, kLevels)) {
    look_through();
    for (int ix = 0; ix < frame_.nx; ++ix)
      columns_.push_back(
          place_between(volume_.column_of(ix), volume_.set().columns(), interpolates_));
    for (int iy = 0; iy < frame_.ny; ++iy)
      rows_.push_back(place_between(volume_.row_of(iy), volume_.set().rows(), interpolates_));
  }

  void paint(int iz, const Canvas& canvas) const override {
    const Between z = slice(iz);
    if (is_over_ && !z.is_within) return;
    const std::vector<cpx>& front = plane(z.lower);
    const std::vector<cpx>& back = plane(z.upper);
    for (int iy = canvas.first_row(); iy < canvas.end_row(); ++iy) {
      const Between& y = rows_[static_cast<std::size_t>(iy)];
      const Canvas::Row row = canvas.row(iz, iy);
      for (int ix = row.begin; ix < row.end; ++ix) {
        const Between& x = columns_[static_cast<std::size_t>(ix)];
        if (is_over_ && !(x.is_within && y.is_within)) continue;
        const bool is_sample = x.weight == 0 && y.weight == 0 && z.weight == 0;
        const cpx value = is_sample ? at(front, y.lower, x.lower)
                                    : mix(in_plane(front, y, x), in_plane(back, y, x), z.weight);
        row[ix] = palette_.round(value, is_sample);
      }
    }
  }

  // look_through() has found the equal slices of the file.
  void sign(int iz, Signature& signature) const override {
    const Between z = slice(iz);
    if (is_over_ && !z.is_within) return;
    const int front = stretches_[static_cast<std::size_t>(z.lower)];
    const int back = stretches_[static_cast<std::size_t>(z.upper)];
    signature.add(Look::kOfItsOwn);
    signature.add_address(this);
    signature.add(static_cast<double>(front));
    if (front != back) signature.add(z.weight);
  }

 private:
  static cpx mix(const cpx& a, const cpx& b, double weight) {
    return weight == 0 ? a : a + (b - a) * weight;
  }
  [[nodiscard]] cpx at(const std::vector<cpx>& indices, int row, int column) const {
    return indices[static_cast<std::size_t>(row) *
                       static_cast<std::size_t>(volume_.set().columns()) +
                   static_cast<std::size_t>(column)];
  }
  [[nodiscard]] cpx in_plane(const std::vector<cpx>& indices, const Between& y,
                             const Between& x) const {
    const auto along = [&](int row) {
      return mix(at(indices, row, x.lower), at(indices, row, x.upper), x.weight);
    };
    return y.weight == 0 ? along(y.lower) : mix(along(y.lower), along(y.upper), y.weight);
  }

  [[nodiscard]] Between slice(int iz) const {
    return place_between(volume_.slice_of(iz - start_), volume_.set().slices(), interpolates_);
  }

  // Slices of the file come in order, so the last two are enough.
  [[nodiscard]] const std::vector<cpx>& plane(int k) const {
    Plane& kept = kept_[static_cast<std::size_t>(k % 2)];
    if (kept.k != k) volume_.read(k, kept.indices);
    kept.k = k;
    return kept.indices;
  }

  // Reads everything once, so that errors in the file appear before the run writes anything.
  void look_through() {
    std::vector<cpx> before;
    for (int k = 0; k < volume_.set().slices(); ++k) {
      const std::vector<cpx>& here = plane(k);
      const bool is_same = k > 0 && here == before;
      stretches_.push_back(k == 0 ? 0 : stretches_.back() + (is_same ? 0 : 1));
      if (is_same) continue;
      palette_.see(here);
      before = here;
    }
    if (palette_.is_exact() && !interpolates_) return;
    std::ostringstream text;
    text << volume_.set().name() << ": indices go in steps of " << palette_.step()
         << "; the phase errs by at most " << palette_.step() / 2
         << " of a turn for each wavelength of depth";
    diagnostics::note(text.str());
  }

  struct Plane {
    int k = -1;
    std::vector<cpx> indices;
  };

  Frame frame_;
  int start_;
  bool interpolates_, is_over_;
  IndexVolume volume_;
  Palette palette_;
  std::vector<Between> columns_, rows_;
  std::vector<int> stretches_;  // uniform segment of each slice of the file
  mutable std::array<Plane, 2> kept_;
};

}  // namespace

double thickness_of_file(const struct_sysOptions& so, const struct_layer& l) {
  const Frame frame(so);
  if (l.z != 0) return l.z / (frame.dz / frame.metres);
  return IndexVolume(so, l).depth();
}

std::unique_ptr<Rule> make_index_file(const struct_sysOptions& so, const Slab& slab,
                                      const struct_layer& l) {
  return std::make_unique<FileRule>(so, slab, l);
}
