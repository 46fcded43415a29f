#include "wpm/sampled_field.h"

#include <cmath>

#include "data/dataset.h"
#include "diagnostics.h"

namespace {

// Which slice of the file is meant.
int slice_of(const data::Dataset& set, double z, const std::string& where) {
  if (set.slices() == 1) return 0;
  const std::string what =
      where + ": " + set.name() + " has " + std::to_string(set.slices()) + " slices and ";
  if (!set.sampling())
    diagnostics::fail(what + "no attribute Spacing to choose one by; save one slice");
  const double spacing = set.sampling()->spacing[2];
  const double first = set.sampling()->origin[2];
  const double k = std::floor((z - first) / spacing + 0.5);
  if (!(k >= 0 && k < set.slices()))
    diagnostics::fail(what + "none at z; they lie from " + std::to_string(first * 1e6) + " to " +
                      std::to_string((first + (set.slices() - 1) * spacing) * 1e6) + " um");
  return static_cast<int>(k);
}

// Cubic convolution of four neighbours, t of the way from the second to the third.
cpx cubic(const cpx& a, const cpx& b, const cpx& c, const cpx& d, double t) {
  return b + 0.5 * t *
                 ((c - a) + t * ((2.0 * a - 5.0 * b + 4.0 * c - d) + t * (3.0 * (b - c) + d - a)));
}

// The same over values at(0)..at(n-1). What lies one sample beyond the ends is extrapolated so that
// the order of the method is kept there.
template <typename Values>
cpx interpolate(int n, double u, Values at) {
  const int i = std::min(static_cast<int>(u), n - 1);
  const double t = u - i;
  if (t == 0.0) return at(i);
  const cpx b = at(i);
  const cpx c = at(i + 1);
  if (n == 2) return b + t * (c - b);
  const cpx a = i > 0 ? at(i - 1) : 3.0 * (b - c) + at(i + 2);
  const cpx d = i + 2 < n ? at(i + 2) : 3.0 * (c - b) + at(i - 1);
  return cubic(a, b, c, d, t);
}

}  // namespace

double SampledField::Axis::position(double x) const {
  const int middle = n / 2;
  const double u = is_centred ? x / spacing + middle : (x - origin) / spacing;
  constexpr double kSame = 1e-7;  // of a spacing: rounding of positions, far below a wavelength
  const double nearest = std::round(u);
  return std::fabs(u - nearest) <= kSame ? nearest : u;
}

SampledField::SampledField(const FieldSource& source, const Grid& grid) {
  const std::string where = data::place(source.configuration, source.line);
  const data::Dataset set(data::beside(source.configuration, source.file), source.dataset,
                          data::Layout::kField, where);
  x_.n = set.columns();
  y_.n = set.rows();
  if (source.dx > 0 && source.dy > 0) {
    x_.spacing = source.dx;
    y_.spacing = source.dy;
  } else if (set.sampling()) {
    const data::Sampling& sampling = *set.sampling();
    x_ = {x_.n, sampling.spacing[0], sampling.origin[0], false};
    y_ = {y_.n, sampling.spacing[1], sampling.origin[1], false};
  } else if (x_.n == grid.nx && y_.n == grid.ny) {
    x_.spacing = grid.dx;
    y_.spacing = grid.dy;
  } else {
    diagnostics::fail(where + ": " + set.name() + " has " + std::to_string(x_.n) + " x " +
                      std::to_string(y_.n) +
                      " samples, not those of the grid, and no attribute Spacing; give their "
                      "spacing by dx and dy");
  }
  values_.resize(static_cast<std::size_t>(x_.n) * static_cast<std::size_t>(y_.n));
  // A complex number is an array of its two parts.
  set.read(slice_of(set, source.z, where), 1, reinterpret_cast<double*>(values_.data()));
}

cpx SampledField::along_row(int row, double u) const {
  const cpx* values =
      values_.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(x_.n);
  return interpolate(x_.n, u, [values](int i) { return values[i]; });
}

cpx SampledField::operator()(double x, double y, const cpx& outside) const {
  const double u = x_.position(x);
  const double v = y_.position(y);
  if (!(u >= 0 && u <= x_.n - 1 && v >= 0 && v <= y_.n - 1)) return outside;
  return interpolate(y_.n, v, [this, u](int row) { return along_row(row, u); });
}

std::vector<cpx> SampledField::on(const Grid& grid, double x, double y, const cpx& outside) const {
  std::vector<cpx> values;
  values.reserve(grid.plane());
  for (int j = 0; j < grid.ny; ++j)
    for (int i = 0; i < grid.nx; ++i)
      values.push_back((*this)(grid.x(i) - x, grid.y(j) - y, outside));
  return values;
}
