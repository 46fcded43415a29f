// Round cores along z: the straight guide, the taper and the S-curved splitter arm.
#include <algorithm>
#include <cmath>

#include "constants.h"
#include "system/round_body.h"

namespace {

// A core whose centre stays where it is.
class StraightCore : public RoundBody {
 public:
  StraightCore(const struct_sysOptions& so, const struct_layer& l)
      : RoundBody(so, l),
        cx_(middle_x() + l.x + l.offsetx),
        cy_(middle_y() + l.y + l.offsety),
        u_(distances(frame().nx, spacing_x(), cx_)),
        v_(distances(frame().ny, spacing_y(), cy_)) {}

 protected:
  [[nodiscard]] CrossSection of_radius(double radius) const {
    return {u_, v_, 0.0, radius * radius, Look::kCore, cx_, cy_};
  }

  static std::vector<double> distances(int n, double spacing, double centre) {
    std::vector<double> u;
    u.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) u.push_back(i * spacing - centre);
    return u;
  }

  double cx_, cy_;

 private:
  std::vector<double> u_, v_;
};

class Guide : public StraightCore {
 public:
  Guide(const struct_sysOptions& so, const struct_layer& l) : StraightCore(so, l), radius_(l.r) {}

 private:
  [[nodiscard]] CrossSection cut(int /*iz*/) const override { return of_radius(radius_); }
  [[nodiscard]] Disc disc(int /*iz*/, double /*depth*/) const override {
    return {0, 0, radius_ * radius_};
  }
  [[nodiscard]] Reach reach(int /*iz*/) const override {
    return {std::fabs(radius_), std::fabs(radius_)};
  }
  [[nodiscard]] bool is_steady() const override { return true; }
  [[nodiscard]] bool goes_by_columns() const override { return true; }

  double radius_;
};

// A guide with a tilted axis through the centre at its first slice. It is round in the plane normal
// to the axis, an ellipse in a slice.
class LeaningGuide : public StraightCore {
 public:
  LeaningGuide(const struct_sysOptions& so, const Slab& slab, const struct_layer& l)
      : StraightCore(so, l), start_(slab.start), radius_(l.r), tilt_(l) {}

 private:
  [[nodiscard]] CrossSection cut(int iz) const override {
    const double z = (iz - start_) * spacing_z();
    const double x = cx_ + tilt_.slope_x * z;
    const double y = cy_ + tilt_.slope_y * z;
    return {distances(frame().nx, spacing_x(), x),
            distances(frame().ny, spacing_y(), y),
            0.0,
            radius_ * radius_,
            Look::kLeaning,
            x,
            y};
  }
  [[nodiscard]] Disc disc(int /*iz*/, double depth) const override {
    const double z = depth * spacing_z();
    return {tilt_.slope_x * z, tilt_.slope_y * z, radius_ * radius_};
  }
  [[nodiscard]] Reach reach(int /*iz*/) const override {
    const double moves = 0.5 * spacing_z() * std::hypot(tilt_.slope_x, tilt_.slope_y);
    return {std::fabs(radius_) - moves, std::fabs(radius_) + moves};
  }
  [[nodiscard]] const Tilt* tilt() const override { return &tilt_; }
  [[nodiscard]] bool goes_by_columns() const override { return true; }

  int start_;
  double radius_;
  Tilt tilt_;
};

// The reach of radii that change from one to other through a slice.
Reach between(double one, double other) {
  const bool closes = (one < 0) != (other < 0);
  return {closes ? 0.0 : std::min(std::fabs(one), std::fabs(other)),
          std::max(std::fabs(one), std::fabs(other))};
}

class Taper : public StraightCore {
 public:
  Taper(const struct_sysOptions& so, const Slab& slab, const struct_layer& l)
      : StraightCore(so, l),
        start_(slab.start),
        rin_(l.rin),
        slope_((l.rout - l.rin) / slab.taken) {}  // of the cut length

 private:
  [[nodiscard]] double radius(int iz, double depth) const {
    return (iz - start_ + depth) * slope_ + rin_;  // rout itself is never reached
  }
  [[nodiscard]] CrossSection cut(int iz) const override { return of_radius(radius(iz, 0)); }
  [[nodiscard]] Disc disc(int iz, double depth) const override {
    const double r = radius(iz, depth);
    return {0, 0, r * r};
  }
  [[nodiscard]] Reach reach(int iz) const override {
    return between(radius(iz, -0.5), radius(iz, 0.5));
  }
  [[nodiscard]] bool is_steady() const override { return slope_ == 0; }

  int start_;
  double rin_, slope_;
};

class SplitterArm : public RoundBody {
 public:
  SplitterArm(const struct_sysOptions& so, const Slab& slab, const struct_layer& l)
      : RoundBody(so, l),
        start_(slab.start),
        taken_(slab.taken),
        cx0_(middle_x() + l.x + l.offsetx),
        cy0_(middle_y() + l.y + l.offsety),
        wx_(l.wx),
        wy_(l.wy),
        rin_(l.rin),
        slope_((l.rout - l.rin) / slab.taken) {}

 private:
  // Slices after the first one; centre and radius depend on it.
  [[nodiscard]] double way(int iz, double depth) const { return iz - start_ + depth; }
  // Starts at 0 (the constant is the arctangent of pi) and rises towards 1.61, not 1: the final
  // displacement is about 1.6 times wx and wy.
  [[nodiscard]] double atan_shape(double liz) const {
    const int middle = taken_ / 2;
    return (std::atan((kTwoPi / taken_) * (liz - middle)) + 1.262627255348652) / 1.570796325;
  }
  // The sum of two equal squares: the disc's radius is radius * sqrt(2).
  [[nodiscard]] double threshold(double liz) const {
    const double radius = slope_ * liz + rin_;
    return radius * radius + radius * radius;
  }

  [[nodiscard]] CrossSection cut(int iz) const override {
    CrossSection section;
    section.look = Look::kArm;
    section.centre_x = wx_ * atan_shape(way(iz, 0)) + cx0_;
    section.centre_y = wy_ * atan_shape(way(iz, 0)) + cy0_;
    section.limit = threshold(way(iz, 0));
    for (int ix = 0; ix < frame().nx; ++ix)
      section.u.push_back(std::fabs(ix * frame().dx / frame().metres) - section.centre_x);
    for (int iy = 0; iy < frame().ny; ++iy)
      section.v.push_back(std::fabs(iy * frame().dy / frame().metres) - section.centre_y);
    return section;
  }
  [[nodiscard]] Disc disc(int iz, double depth) const override {
    const double moved = atan_shape(way(iz, depth)) - atan_shape(way(iz, 0));
    return {wx_ * moved, wy_ * moved, threshold(way(iz, depth))};
  }
  [[nodiscard]] Reach reach(int iz) const override {
    const Disc first = disc(iz, -0.5);
    const Disc last = disc(iz, 0.5);
    const double moves = std::max(std::hypot(first.x, first.y), std::hypot(last.x, last.y));
    const Reach radii = between(slope_ * way(iz, -0.5) + rin_, slope_ * way(iz, 0.5) + rin_);
    return {std::sqrt(2) * radii.inner - moves, std::sqrt(2) * radii.outer + moves};
  }

  int start_, taken_;
  double cx0_, cy0_, wx_, wy_, rin_, slope_;
};

}  // namespace

std::unique_ptr<Rule> make_guide(const struct_sysOptions& so, const Slab& slab,
                                 const struct_layer& l) {
  if (!Tilt(l).is_none()) return std::make_unique<LeaningGuide>(so, slab, l);
  return std::make_unique<Guide>(so, l);
}

std::unique_ptr<Rule> make_taper(const struct_sysOptions& so, const Slab& slab,
                                 const struct_layer& l) {
  return std::make_unique<Taper>(so, slab, l);
}

std::unique_ptr<Rule> make_splitter(const struct_sysOptions& so, const Slab& slab,
                                    const struct_layer& l) {
  return std::make_unique<SplitterArm>(so, slab, l);
}
