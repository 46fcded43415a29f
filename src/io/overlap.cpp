// A table of the overlap with a mode, slice by slice.
#include <cmath>
#include <deque>

#include "io/box.h"
#include "io/mode_field.h"
#include "io/monitors.h"
#include "io/table.h"
#include "wpm/byte_stream.h"

namespace {

// The slope of a phase over the last length of z, by least squares.
class Slope {
 public:
  explicit Slope(double length) : length_(length) {}

  // z in m, phase in rad up to whole turns, expected: rad/m, near enough that the phase strays from
  // it by less than half a turn a step.
  void add(double z, double phase, double expected) {
    if (!points_.empty()) {
      const auto& [z0, phase0] = points_.back();
      const double strayed = phase - phase0 - expected * (z - z0);
      phase = phase0 + expected * (z - z0) + std::remainder(strayed, 2 * M_PI);
    }
    points_.push_back({z, phase});
    while (points_.size() > 2 && z - points_.front().z > length_ * (1 + 1e-9)) points_.pop_front();
  }

  // rad/m; NaN for fewer than two points.
  [[nodiscard]] double value() const {
    const double count = static_cast<double>(points_.size());
    double z_mean = 0, phase_mean = 0;
    for (const Point& p : points_) z_mean += p.z / count, phase_mean += p.phase / count;
    double zz = 0, zp = 0;
    for (const Point& p : points_) {
      zz += (p.z - z_mean) * (p.z - z_mean);
      zp += (p.z - z_mean) * (p.phase - phase_mean);
    }
    return zp / zz;
  }

  void save(ByteWriter& state) const { state.put_all(points_); }
  void restore(ByteReader& from) { from.take_all(points_); }

 private:
  struct Point {
    double z, phase;
  };
  double length_;
  std::deque<Point> points_;
};

class OverlapSink : public Sink {
 public:
  OverlapSink(const Monitor& monitor, const Grid& grid, const RunContext& run,
              const std::string& where)
      : monitor_(monitor),
        grid_(grid),
        run_(run),
        where_(where),
        box_(box_of(monitor, grid, where)),
        units_(grid),
        centre_(static_cast<std::size_t>(nearest_y(grid, monitor.y.value_or(0), where)) *
                    static_cast<std::size_t>(grid.nx) +
                static_cast<std::size_t>(nearest_x(grid, monitor.x.value_or(0), where))),
        slope_(10 * run.lambda),
        table_(monitor.file, {{"slice", "1"},
                              {"z", units_.length},
                              {"overlap_re", "amp " + units_.length},
                              {"overlap_im", "amp " + units_.length},
                              {"efficiency", "1"},
                              {"phase", "rad"},
                              {"effective_index", "1"}}) {
    // What cannot be is said before the run; the index at the entry is known with the first slice.
    if (monitor.mode != Monitor::Mode::kInput) mode_field(monitor, grid, run, 1.0, where);
  }

  void take(int k, const Slice& slice) override;
  [[nodiscard]] SliceRequest required(int /*k*/) const override { return {true, false, true}; }
  void finish() override { table_.finish(); }
  SinkState save() override;
  void restore(const SinkState& state) override;

 private:
  void find_mode(const Slice& first);

  Monitor monitor_;
  Grid grid_;
  RunContext run_;
  std::string where_;
  Box box_;
  TableUnits units_;
  std::size_t centre_;
  std::vector<cpx> mode_;  // its power, the sum of |m|^2, is 1
  Slope slope_;
  Table table_;
};

void OverlapSink::find_mode(const Slice& first) {
  if (monitor_.mode == Monitor::Mode::kInput)
    mode_.assign(first.E, first.E + grid_.plane());
  else
    mode_ = mode_field(monitor_, grid_, run_, first.N[centre_].real(), where_);
  double power = 0;
  for (const cpx& value : mode_) power += std::norm(value);
  for (cpx& value : mode_) value /= std::sqrt(power);
}

// The phase is followed through all slices, also those that the table leaves out.
void OverlapSink::take(int k, const Slice& slice) {
  table_.file();
  if (mode_.empty()) find_mode(slice);
  cpx overlap = 0;
  double power = 0;
  for (std::size_t i = 0; i < mode_.size(); ++i) {
    overlap += std::conj(mode_[i]) * slice.E[i];
    power += std::norm(slice.E[i]);
  }
  slope_.add(grid_.z(k), std::arg(overlap), run_.k0 * slice.N[centre_].real());
  if (!box_.has_slice(k)) return;
  const cpx amplitude = overlap * std::sqrt(grid_.dx * grid_.dy) / units_.metres;
  table_.add_row({static_cast<double>(k), grid_.z(k) / units_.metres, amplitude.real(),
                  amplitude.imag(), std::norm(overlap) / power, std::arg(overlap),
                  slope_.value() / run_.k0});
}

SinkState OverlapSink::save() {
  ByteWriter state;
  table_.save(state);
  state.put(mode_.size());
  state.put_all(mode_);
  slope_.save(state);
  return state.bytes();
}

void OverlapSink::restore(const SinkState& state) {
  ByteReader from(state);
  table_.restore(from);
  from.take_all(mode_, from.take<std::size_t>());
  slope_.restore(from);
}

}  // namespace

std::unique_ptr<Sink> make_overlap_sink(const Monitor& monitor, const Grid& grid,
                                        const RunContext& run, const std::string& where) {
  return std::make_unique<OverlapSink>(monitor, grid, run, where);
}
