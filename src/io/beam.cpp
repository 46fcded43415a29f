// A table of the beam, slice by slice: power, place, width.
#include <algorithm>
#include <cmath>

#include "io/box.h"
#include "io/monitors.h"
#include "io/table.h"
#include "wpm/byte_stream.h"

namespace {

// Moments of the intensity of a slice, in the unit of its axes.
struct Moments {
  double sum = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;

  void add(double intensity, double at_x, double at_y) {
    sum += intensity;
    x += intensity * at_x;
    y += intensity * at_y;
    xx += intensity * at_x * at_x;
    xy += intensity * at_x * at_y;
    yy += intensity * at_y * at_y;
  }
};

struct Ellipse {
  double x, y;          // centroid
  double major, minor;  // second-moment widths along the principal axes, 4 sigma
  double angle;         // of the major axis from the x axis, degrees
};

// ISO 11146-1: widths 4 sigma along the principal axes of the second moments.
Ellipse ellipse_of(const Moments& m) {
  Ellipse e{};
  e.x = m.x / m.sum;
  e.y = m.y / m.sum;
  const double xx = m.xx / m.sum - e.x * e.x;
  const double yy = m.yy / m.sum - e.y * e.y;
  const double xy = m.xy / m.sum - e.x * e.y;
  const double mean = (xx + yy) / 2;
  const double spread = std::hypot((xx - yy) / 2, xy);
  // A NaN stays one.
  const auto width = [](double variance) { return 4 * std::sqrt(variance < 0 ? 0.0 : variance); };
  e.major = width(mean + spread);
  e.minor = width(mean - spread);
  e.angle = std::atan2(2 * xy, xx - yy) / 2 * 180 / M_PI;
  return e;
}

class BeamSink : public Sink {
 public:
  BeamSink(const Monitor& monitor, const Grid& grid, const RunContext& run,
           const std::string& where)
      : grid_(grid),
        box_(box_of(monitor, grid, where)),
        units_(grid),
        x_(monitor.x.value_or(0)),
        y_(monitor.y.value_or(0)),
        radius_(monitor.r),
        axis_x_(nearest_x(grid, x_, where)),
        axis_y_(nearest_y(grid, y_, where)),
        light_taken_(run.light_taken),
        table_(monitor.file, columns()) {}

  void take(int k, const Slice& slice) override {
    table_.file();
    if (box_.has_slice(k)) table_.add_row(row(k, slice));
  }
  [[nodiscard]] SliceRequest required(int k) const override {
    if (!box_.has_slice(k)) return {};
    return {true, false, false, true};
  }
  void finish() override { table_.finish(); }
  SinkState save() override {
    ByteWriter state;
    table_.save(state);
    return state.bytes();
  }
  void restore(const SinkState& state) override {
    ByteReader from(state);
    table_.restore(from);
  }

 private:
  [[nodiscard]] std::vector<Column> columns() const;
  [[nodiscard]] std::vector<double> row(int k, const Slice& slice) const;

  Grid grid_;
  Box box_;
  TableUnits units_;
  double x_, y_;  // of the axis
  std::optional<double> radius_;
  int axis_x_, axis_y_;
  std::function<double()> light_taken_;
  Table table_;
};

std::vector<Column> BeamSink::columns() const {
  const std::string& length = units_.length;
  std::vector<Column> all = {
      {"slice", "1"}, {"z", length}, {"power", units_.area_power}, {"flux", "amp^2 rad/m"}};
  if (radius_) all.push_back({"power_in_circle", units_.area_power});
  all.insert(all.end(), {{"peak", "amp^2"},
                         {"peak_x", length},
                         {"peak_y", length},
                         {"centroid_x", length},
                         {"centroid_y", length},
                         {"width_major", length},
                         {"width_minor", length},
                         {"angle", "degree"},
                         {"ellipticity", "1"},
                         {"axis_re", "amp"},
                         {"axis_im", "amp"},
                         {"taken_by_edge", units_.area_power}});
  return all;
}

std::vector<double> BeamSink::row(int k, const Slice& slice) const {
  const auto columns = static_cast<std::size_t>(grid_.nx);
  const double area = grid_.dx * grid_.dy / (units_.metres * units_.metres);
  Moments moments;
  double in_circle = 0, peak = -1, peak_x = 0, peak_y = 0;
  for (int j = 0; j < grid_.ny; ++j) {
    const double y = grid_.y(j) / units_.metres;
    Moments line;  // sums of sums keep more digits
    for (int i = 0; i < grid_.nx; ++i) {
      const std::size_t sample =
          static_cast<std::size_t>(j) * columns + static_cast<std::size_t>(i);
      const double x = grid_.x(i) / units_.metres;
      const double intensity = std::norm(slice.E[sample]);
      line.add(intensity, x, y);
      if (radius_ && std::hypot(x - x_, y - y_) <= *radius_) in_circle += intensity;
      if (intensity > peak) {
        peak = intensity;
        peak_x = x;
        peak_y = y;
      }
    }
    moments.sum += line.sum;
    moments.x += line.x;
    moments.y += line.y;
    moments.xx += line.xx;
    moments.xy += line.xy;
    moments.yy += line.yy;
  }
  const Ellipse ellipse = ellipse_of(moments);
  if (!(peak >= 0)) peak = peak_x = peak_y = std::nan("");
  const cpx axis =
      slice.E[static_cast<std::size_t>(axis_y_) * columns + static_cast<std::size_t>(axis_x_)];
  std::vector<double> row = {static_cast<double>(k), grid_.z(k) / units_.metres, moments.sum * area,
                             slice.flux};
  if (radius_) row.push_back(in_circle * area);
  row.insert(row.end(), {peak, peak_x, peak_y, ellipse.x, ellipse.y, ellipse.major, ellipse.minor,
                         ellipse.angle, ellipse.minor / ellipse.major, axis.real(), axis.imag(),
                         light_taken_ ? light_taken_() / (units_.metres * units_.metres) : 0.0});
  return row;
}

}  // namespace

std::unique_ptr<Sink> make_beam_sink(const Monitor& monitor, const Grid& grid,
                                     const RunContext& run, const std::string& where) {
  return std::make_unique<BeamSink>(monitor, grid, run, where);
}
