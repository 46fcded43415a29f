// The rod of graded index.
#include <algorithm>
#include <cmath>

#include "system/mix.h"
#include "system/rule.h"

namespace {

constexpr int kLevels = 64;  // if the file gives none

// n(rho) = n sqrt(1 - (g rho)^2) within r (Saleh & Teich, Fundamentals of Photonics, 1.3-8, before
// its root is expanded). Rays of small angle repeat after 2 pi/g. The index from axis to rim has
// steps of equal height, each at the value of its middle. The error is at most half a step and 0 on
// average.
class GradedRod : public Rule {
 public:
  GradedRod(const struct_sysOptions& so, const struct_layer& l)
      : frame_(so),
        cx_(((frame_.nx * frame_.dx) / frame_.metres) * 0.5 + l.offsetx),
        cy_(((frame_.ny * frame_.dy) / frame_.metres) * 0.5 + l.offsety),
        radius_(l.r),
        gradient_(l.g),
        axis_(l.n),
        rim_(l.n * root(l.g * l.r)),
        outside_(l.ne, l.ke),
        is_over_(l.over),
        levels_(levels_of(l, kLevels)),
        extinction_(l.k) {
    for (int step = 0; step < levels_; ++step)
      steps_.emplace_back(axis_ - (axis_ - rim_) * ((step + 0.5) / levels_), l.k);
  }

  void paint(int iz, const Canvas& canvas) const override {
    for (int iy = canvas.first_row(); iy < canvas.end_row(); ++iy) {
      const double v = iy * (frame_.dy / frame_.metres) - cy_;
      const Canvas::Row row = canvas.row(iz, iy);
      for (int ix = row.begin; ix < row.end; ++ix) {
        const double u = ix * (frame_.dx / frame_.metres) - cx_;
        const double rho2 = u * u + v * v;
        if (!(rho2 > radius_ * radius_))
          row[ix] = within(std::sqrt(rho2));
        else if (!is_over_)
          row[ix] = outside_;
      }
    }
  }

  void sign(int /*iz*/, Signature& signature) const override {
    signature.add(Look::kGraded);
    for (const double value :
         {cx_, cy_, radius_, gradient_, axis_, extinction_, static_cast<double>(levels_)})
      signature.add(value);
    signature.add(outside_);
    signature.add(is_over_);
  }

 private:
  static double root(double g_rho) { return std::sqrt(std::max(1 - g_rho * g_rho, 0.0)); }

  [[nodiscard]] cpx within(double rho) const {
    if (!(axis_ > rim_)) return {axis_, extinction_};  // no gradient, no steps
    const double below = (axis_ - axis_ * root(gradient_ * rho)) / (axis_ - rim_) * levels_;
    return steps_[static_cast<std::size_t>(std::clamp(below, 0.0, levels_ - 1.0))];
  }

  Frame frame_;
  double cx_, cy_, radius_, gradient_, axis_, rim_;
  cpx outside_;
  bool is_over_;
  int levels_;
  double extinction_;
  std::vector<cpx> steps_;
};

}  // namespace

std::unique_ptr<Rule> make_grin(const struct_sysOptions& so, const Slab& /*slab*/,
                                const struct_layer& l) {
  return std::make_unique<GradedRod>(so, l);
}
