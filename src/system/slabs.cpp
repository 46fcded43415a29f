// Components that fill whole slices: the uniform slab and the crossed grating.
#include <algorithm>
#include <cmath>
#include <sstream>

#include "diagnostics.h"
#include "system/rule.h"

namespace {

class Uniform : public Rule {
 public:
  explicit Uniform(const struct_layer& l) : n_(l.n, l.k) {}

  void paint(int iz, const Canvas& canvas) const override {
    for (int iy = canvas.first_row(); iy < canvas.end_row(); ++iy) canvas.row(iz, iy).fill(n_);
  }
  void sign(int /*iz*/, Signature& signature) const override {
    signature.add(Look::kUniform);
    signature.add(n_);
  }

 private:
  cpx n_;
};

// Half a grating length in samples; the length is rounded up to whole samples first.
int half_samples(double length, double spacing) {
  return truncate_to_int(std::floor(std::ceil(length / spacing) * 0.5));
}

// Whether sample i is outside the bars. Half the period is the modulus, half the width the
// threshold. The pattern thus repeats at half the file's period. Its phase starts at the grid's
// first sample, not its centre. The pattern is defined so.
bool is_off_bar(int i, int half_width, int half_period) {
  return (i + half_width / 2) % half_period > half_width;
}

// is_off_bar for all samples of an axis. The upper half is computed and mirrored. An offset in
// whole samples continues the pattern beyond the grid's end.
std::vector<char> off_bars(int n, int half_width, int half_period, int moved_by) {
  std::vector<char> is_off(static_cast<std::size_t>(std::max(n, 0)));
  for (int i = 0; i < n; ++i) {
    const int place = i - moved_by;
    is_off[static_cast<std::size_t>(i)] =
        is_off_bar(std::max(place, n - 1 - place), half_width, half_period) ? 1 : 0;
  }
  return is_off;
}

// The offset of a grating in whole samples, so that its bars keep their width.
int whole_samples(double offset, double spacing) {
  constexpr double kFarAway = 1e9;
  const double samples = std::nearbyint(offset / spacing);
  return std::fabs(samples) < kFarAway ? static_cast<int>(samples) : 0;
}

class CrossedGrating : public Rule {
 public:
  CrossedGrating(const struct_sysOptions& so, const struct_layer& l)
      : frame_(so),
        bar_(l.n, l.k),
        cell_(l.ne, l.ke),
        is_over_(l.over),
        is_off_x_(pattern(l.wx, l.px, l.offsetx, frame_.dx / frame_.metres, frame_.nx)),
        is_off_y_(pattern(l.wy, l.py, l.offsety, frame_.dy / frame_.metres, frame_.ny)) {}

  void paint(int iz, const Canvas& canvas) const override {
    if (!frame_.is_square()) {
      paint_by_quadrants(iz, canvas);
      return;
    }
    for (int iy = canvas.first_row(); iy < canvas.end_row(); ++iy) {
      const Canvas::Row row = canvas.row(iz, iy);
      for (int ix = row.begin; ix < row.end; ++ix) put(row, ix, iy);
    }
  }

  void sign(int /*iz*/, Signature& signature) const override {
    signature.add(Look::kCross);
    signature.add(bar_);
    signature.add(cell_);
    signature.add(is_over_);
    for (const auto* pattern : {&is_off_x_, &is_off_y_})
      for (const char is_off : *pattern) signature.add(is_off != 0);
  }

 private:
  static std::vector<char> pattern(double width, double period, double offset, double spacing,
                                   int n) {
    return off_bars(n, half_samples(width, spacing), half_samples(period, spacing),
                    whole_samples(offset, spacing));
  }

  void put(const Canvas::Row& row, int ix, int iy) const {
    if (ix < row.begin || ix >= row.end) return;
    const bool is_cell = is_off_x_[static_cast<std::size_t>(ix)] != 0 &&
                         is_off_y_[static_cast<std::size_t>(iy)] != 0;
    if (!is_cell)
      row[ix] = bar_;
    else if (!is_over_)
      row[ix] = cell_;
  }

  // Paints one quadrant by columns and mirrors it to the other three. The order of writing matters
  // on a grid with overlapping rows.
  void paint_by_quadrants(int iz, const Canvas& canvas) const {
    for (int ix = frame_.nx / 2; ix < frame_.nx; ++ix)
      for (int iy = frame_.ny / 2; iy < frame_.ny; ++iy)
        for (const int y : {iy, frame_.ny - 1 - iy}) {
          const Canvas::Row row = canvas.row(iz, y);
          put(row, ix, y);
          put(row, frame_.nx - 1 - ix, y);
        }
  }

  Frame frame_;
  cpx bar_, cell_;
  bool is_over_;
  std::vector<char> is_off_x_, is_off_y_;
};

void require_period(const struct_sysOptions& so, const char* key, double period, double spacing,
                    int number) {
  if (half_samples(period, spacing) != 0) return;
  std::ostringstream text;
  text << so.sysname << ": layer";
  if (number > 0) text << ' ' << number;
  text << " (grating): " << key << " = " << period
       << " is under two samples of the grid, whose spacing is " << spacing << "; make " << key
       << " more than " << spacing << " or the grid finer";
  diagnostics::fail(text.str());
}

}  // namespace

void require_grating_periods(const struct_sysOptions& so, const Slab& slab, const struct_layer& l,
                             int number) {
  if (l.duty > 0) return;  // bars of a duty need not be whole samples
  if (slab.taken <= 0) return;
  const Frame frame(so);
  require_period(so, "px", l.px, frame.dx / frame.metres, number);
  require_period(so, "py", l.py, frame.dy / frame.metres, number);
}

std::unique_ptr<Rule> make_homog(const struct_sysOptions& /*so*/, const Slab& /*slab*/,
                                 const struct_layer& l) {
  return std::make_unique<Uniform>(l);
}

std::unique_ptr<Rule> make_grating(const struct_sysOptions& so, const Slab& /*slab*/,
                                   const struct_layer& l) {
  if (l.duty > 0) return make_equal_bars(so, l);
  return std::make_unique<CrossedGrating>(so, l);
}
