// Gratings of equal bars with the exact share of the period.
#include <algorithm>
#include <cmath>

#include "system/mix.h"
#include "system/rule.h"

namespace {

constexpr int kLevels = 64;  // if the file gives none

// Bars of equal width at every period along an axis, one in the middle. Positions are in file units
// from the grid's first sample.
struct BarsAlong {
  double middle, period, width;

  // Length of bar from 0 to a position; negative to the left.
  [[nodiscard]] double up_to(double position) const {
    const double periods = (position - middle + 0.5 * width) / period;
    const double whole = std::floor(periods);
    return whole * width + std::min((periods - whole) * period, width);
  }
  [[nodiscard]] bool holds(double position) const {
    const double periods = (position - middle + 0.5 * width) / period;
    return (periods - std::floor(periods)) * period < width;
  }
};

// The share of bar in each sample's cell, centred on the sample. With one level it is that of the
// sample itself. 0 without a period.
std::vector<double> shares_of(const BarsAlong& bars, int n, double spacing, int levels) {
  std::vector<double> shares;
  for (int i = 0; i < n; ++i) {
    const double x = i * spacing;
    const double half = 0.5 * std::fabs(spacing);
    if (!(bars.period > 0))
      shares.push_back(0);
    else if (levels == 1)
      shares.push_back(bars.holds(x) ? 1 : 0);
    else
      shares.push_back((bars.up_to(x + half) - bars.up_to(x - half)) / (2 * half));
  }
  return shares;
}

// Bars across x, y or both, depending on the periods given.
class EqualBars : public Rule {
 public:
  EqualBars(const struct_sysOptions& so, const struct_layer& l)
      : EqualBars(Frame(so), l, levels_of(l, kLevels)) {}

  void paint(int iz, const Canvas& canvas) const override {
    for (int iy = canvas.first_row(); iy < canvas.end_row(); ++iy) {
      const double gap_y = 1 - share_y_[static_cast<std::size_t>(iy)];
      const Canvas::Row row = canvas.row(iz, iy);
      for (int ix = row.begin; ix < row.end; ++ix)
        mix_.lay(row[ix], 1 - (1 - share_x_[static_cast<std::size_t>(ix)]) * gap_y);
    }
  }

  void sign(int /*iz*/, Signature& signature) const override {
    signature.add(Look::kOfItsOwn);
    signature.add_address(this);
    signature.add(0.0);
  }

 private:
  EqualBars(const Frame& frame, const struct_layer& l, int levels)
      : frame_(frame),
        mix_({l.n, l.k}, {l.ne, l.ke}, levels, l.over),
        share_x_(along(frame.nx, frame.dx / frame.metres, l.offsetx, l.px, l.duty, levels)),
        share_y_(along(frame.ny, frame.dy / frame.metres, l.offsety, l.py, l.duty, levels)) {}

  static std::vector<double> along(int n, double spacing, double offset, double period, double duty,
                                   int levels) {
    // The middle of all cells is half a spacing before sample n/2. Bars of an even number of
    // samples then end between samples and cut none.
    return shares_of({0.5 * (n - 1) * spacing + offset, period, duty * period}, n, spacing, levels);
  }

  Frame frame_;
  Mix mix_;
  std::vector<double> share_x_, share_y_;
};

}  // namespace

std::unique_ptr<Rule> make_equal_bars(const struct_sysOptions& so, const struct_layer& l) {
  return std::make_unique<EqualBars>(so, l);
}
