// The spherical lens.
#include <algorithm>
#include <cmath>

#include "system/round_body.h"

namespace {

// Uses the spacings and sizes of the file, without the metric factor and the substitutes of the
// other components.
class Lens : public RoundBody {
 public:
  Lens(const struct_sysOptions& so, const Slab& slab, const struct_layer& l)
      : RoundBody(so, l), dz_(so.dz), moved_by_(l.dz), limit_(l.r * l.r) {
    // The sphere touches the end of the component. A positive radius puts the vertex at the last
    // slice. A negative one puts it at the first, with the centre after it. A tilt rotates the
    // sphere about its vertex; the flat side stays in its slice.
    const Tilt tilt(l);
    const double last = static_cast<double>(slab.start) + slab.taken - 1;
    const double vertex = l.r > 0 ? last * so.dz : slab.start * so.dz;
    z0_ = vertex - l.r * tilt.cosine;
    centre_x_ = l.dx + l.offsetx;
    centre_y_ = l.dy + l.offsety;
    if (!tilt.is_none()) {
      centre_x_ -= l.r * tilt.cosine * tilt.slope_x;
      centre_y_ -= l.r * tilt.cosine * tilt.slope_y;
    }
    for (int ix = 0; ix < frame().nx; ++ix)
      u_.push_back(ix * so.dx - so.nx * so.dx * 0.5 - centre_x_);
    for (int iy = 0; iy < frame().ny; ++iy)
      v_.push_back(iy * so.dy - so.ny * so.dy * 0.5 - centre_y_);
  }

 private:
  [[nodiscard]] double from_centre(int iz) const { return iz * dz_ - z0_ - moved_by_; }
  [[nodiscard]] CrossSection cut(int iz) const override {
    return {u_, v_, from_centre(iz), limit_, Look::kBall, centre_x_, centre_y_};
  }
  [[nodiscard]] Disc disc(int iz, double depth) const override {
    const double w = from_centre(iz) + depth * dz_;
    return {0, 0, limit_ - w * w};
  }
  [[nodiscard]] Reach reach(int iz) const override {
    const double middle = std::fabs(from_centre(iz));
    const double half = 0.5 * std::fabs(dz_);
    const auto radius_at = [this](double w) {
      return w * w <= limit_ ? std::sqrt(limit_ - w * w) : -1.0;
    };
    return {radius_at(middle + half), radius_at(std::max(middle - half, 0.0))};
  }

  double dz_, moved_by_, limit_;
  double z0_ = 0, centre_x_ = 0, centre_y_ = 0;
  std::vector<double> u_, v_;
};

}  // namespace

std::unique_ptr<Rule> make_lens(const struct_sysOptions& so, const Slab& slab,
                                const struct_layer& l) {
  return std::make_unique<Lens>(so, slab, l);
}
