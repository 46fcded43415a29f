#include "system/round_body.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "system/shares.h"

namespace {

// The least square; NaN if there is one, since NaN counts as inside.
double least_square(const std::vector<double>& distances) {
  double least = std::numeric_limits<double>::infinity();
  for (const double d : distances) {
    if (std::isnan(d)) return d;
    least = std::min(least, d * d);
  }
  return least;
}

constexpr double kRadian = M_PI / 180;

}  // namespace

Tilt::Tilt(const struct_layer& l)
    : slope_x(std::tan(l.tiltx * kRadian)),
      slope_y(std::tan(l.tilty * kRadian)),
      cosine(1 / std::sqrt(1 + slope_x * slope_x + slope_y * slope_y)) {}

void Tilt::to_square_plane(double& u, double& v) const {
  // The cosine scales the component along the tilt.
  const double along = (u * slope_x + v * slope_y) / (slope_x * slope_x + slope_y * slope_y);
  u -= (1 - cosine) * along * slope_x;
  v -= (1 - cosine) * along * slope_y;
}

RoundBody::RoundBody(const struct_sysOptions& so, const struct_layer& l)
    : frame_(so),
      inside_(l.n, l.k),
      outside_(l.ne, l.ke),
      is_over_(l.over),
      mix_(inside_, outside_, l.levels, l.over) {}

// The squared distance of each sample of a row from the axis, in the plane normal to it.
void RoundBody::square_distances(const CrossSection& section, double v,
                                 std::vector<double>& squares) const {
  const Tilt* leaning = tilt();
  squares.resize(section.u.size());
  for (std::size_t ix = 0; ix < squares.size(); ++ix) {
    double u = section.u[ix];
    double v_here = v;
    if (leaning != nullptr) leaning->to_square_plane(u, v_here);
    squares[ix] = u * u + v_here * v_here;
  }
}

// Samples are inside up to near, outside from far on, and mixed between (squared distances).
void RoundBody::paint_shared_row(int iz, const Canvas::Row& row, const CrossSection& section,
                                 double v, const std::vector<double>& squares, double near,
                                 double far) const {
  for (int ix = row.begin; ix < row.end; ++ix) {
    const auto i = static_cast<std::size_t>(ix);
    if (squares[i] <= near)
      row[ix] = inside_;
    else if (!(squares[i] >= far))
      mix_.lay(row[ix], share(iz, section.u[i], v));
    else if (!is_over_)
      row[ix] = outside_;
  }
}

double RoundBody::share(int iz, double u, double v) const {
  const double half_x = 0.5 * std::fabs(spacing_x());
  const double half_y = 0.5 * std::fabs(spacing_y());
  const double cosine = tilt() == nullptr ? 1 : tilt()->cosine;
  const double cell = 4 * half_x * half_y * cosine;
  const auto at_depth = [&](double depth) {
    const Disc d = disc(iz, depth);
    std::array<Point, 4> corners = {{{u - half_x, v - half_y},
                                     {u + half_x, v - half_y},
                                     {u + half_x, v + half_y},
                                     {u - half_x, v + half_y}}};
    for (Point& corner : corners) {
      corner.x -= d.x;
      corner.y -= d.y;
      if (tilt() != nullptr) tilt()->to_square_plane(corner.x, corner.y);
    }
    return shared_area(corners, d.radius_squared) / cell;
  };
  // A quarter of a step: rounding to the nearest step is then off by less than one.
  return is_steady() ? at_depth(0) : mean_over_depth(at_depth, 0.25 / mix_.levels());
}

void RoundBody::paint(int iz, const Canvas& canvas) const {
  const CrossSection section = cut(iz);
  const double least_u2 = tilt() == nullptr ? least_square(section.u) : 0;
  std::vector<double> squares;
  const auto for_rows = [&](const auto& is_outside, const auto& paint_row) {
    const int first = canvas.first_row();
    const int end = canvas.end_row();
    for (int step = first; step < end; ++step) {
      const int iy = goes_by_columns() ? first + end - 1 - step : step;
      const Canvas::Row row = canvas.row(iz, iy);
      const double v = section.v[static_cast<std::size_t>(iy)];
      const double least_v2 = tilt() == nullptr ? v * v : 0;
      if (is_outside(least_u2 + least_v2)) {  // true for any other u too
        if (!is_over_) row.fill(outside_);
        continue;
      }
      square_distances(section, v, squares);
      paint_row(row, v);
    }
  };
  if (mix_.levels() > 1) {
    const Reach radii = reach(iz);
    const double half_diagonal = 0.5 * std::hypot(spacing_x(), spacing_y());
    const double far = radii.outer < 0 ? 0 : std::pow(radii.outer + half_diagonal, 2);
    const double near = radii.inner < half_diagonal ? -1 : std::pow(radii.inner - half_diagonal, 2);
    for_rows([=](double square) { return square >= far; },
             [&](const Canvas::Row& row, double v) {
               paint_shared_row(iz, row, section, v, squares, near, far);
             });
    return;
  }
  const double w2 = section.w * section.w;
  for_rows([&](double square) { return square + w2 > section.limit; },
           [&](const Canvas::Row& row, double /*v*/) {
             for (int ix = row.begin; ix < row.end; ++ix) {
               const bool is_outside = squares[static_cast<std::size_t>(ix)] + w2 > section.limit;
               if (!is_outside)
                 row[ix] = inside_;
               else if (!is_over_)
                 row[ix] = outside_;
             }
           });
}

void RoundBody::sign(int iz, Signature& signature) const {
  const CrossSection section = cut(iz);
  const double w2 = section.w * section.w;
  const bool has_levels = mix_.levels() > 1;
  const bool is_elsewhere =
      has_levels ? reach(iz).outer < 0
                 : tilt() == nullptr &&
                       least_square(section.u) + least_square(section.v) + w2 > section.limit;
  if (is_elsewhere) {  // the body is not in this slice
    if (is_over_) return;
    signature.add(Look::kUniform);
    signature.add(outside_);
    return;
  }
  if (has_levels && !is_steady()) {  // voxels vary with depth: no two slices are equal
    signature.add(Look::kOfItsOwn);
    signature.add_address(this);
    signature.add(static_cast<double>(iz));
    return;
  }
  signature.add(section.look);
  for (const double value : {w2, section.limit, section.centre_x, section.centre_y})
    signature.add(value);
  if (tilt() != nullptr)
    for (const double value : {tilt()->slope_x, tilt()->slope_y}) signature.add(value);
  signature.add(inside_);
  signature.add(outside_);
  signature.add(is_over_);
  signature.add(static_cast<double>(mix_.levels()));
}
