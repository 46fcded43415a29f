// The brightest place of a box, and how wide the light is there: a table of one row.
#include <algorithm>
#include <array>
#include <cmath>
#include <deque>

#include "diagnostics.h"
#include "io/box.h"
#include "io/monitors.h"
#include "io/table.h"
#include "wpm/byte_stream.h"

namespace {

// The peak of a parabola through three logarithms, which is exact for a Gaussian: its offset from
// the middle, in samples, and its height over the middle's as a factor.
struct Fit {
  double offset = 0, gain = 1;
};

Fit fit(double before, double middle, double after) {
  if (!(before > 0 && after > 0 && middle >= before && middle >= after)) return {};
  const double a = std::log(before / middle);
  const double b = std::log(after / middle);
  if (!(a + b < 0)) return {};
  const double offset = 0.5 * (a - b) / (a + b);
  return {offset, std::exp(0.25 * (b - a) * offset)};
}

// How far from sample `peak` a row falls to `half`, in samples, in the direction of `step`: along
// the parabola of the three logarithms around the place. NaN if it does not fall so far.
template <typename Row>
double fall(const Row& row, int count, int peak, int step, double half) {
  for (int i = peak + step; i >= 0 && i < count; i += step) {
    if (!(row(i) <= half)) continue;
    const int inner = i - step, before = inner - step;
    const bool has_three = before >= 0 && before < count && row(before) > 0;
    if (!(row(i) > 0)) return std::abs(inner - peak) + 1 - half / row(inner);
    const double to_half = std::log(row(inner) / half);
    const double outward = std::log(row(i) / row(inner));
    const double inward = has_three ? std::log(row(before) / row(inner)) : -outward;
    const double bend = (outward + inward) / 2;
    const double slope = (outward - inward) / 2;
    const double root = std::sqrt(std::max(slope * slope - 4 * bend * to_half, 0.0));
    return std::abs(inner - peak) + std::clamp(2 * to_half / (root - slope), 0.0, 1.0);
  }
  return std::nan("");
}

// The full width at half of the row's own maximum, in samples.
template <typename Row>
double full_width(const Row& row, int count, int peak) {
  const double middle = row(peak);
  const Fit top = peak > 0 && peak + 1 < count ? fit(row(peak - 1), middle, row(peak + 1)) : Fit{};
  const double half = 0.5 * middle * top.gain;
  return fall(row, count, peak, -1, half) + fall(row, count, peak, 1, half);
}

// The brightest sample so far, with what is needed around it.
struct Candidate {
  double intensity = -1;
  int i = 0, j = 0, k = 0;
  Fit x, y;
  double width_x = 0, width_y = 0;  // samples
};

class FocusSink : public Sink {
 public:
  FocusSink(const Monitor& monitor, const Grid& grid, const std::string& where)
      : grid_(grid),
        box_(box_of(monitor, grid, where)),
        units_(grid),
        name_(monitor.file),
        table_(monitor.file, {{"slice", "1"},
                              {"x", units_.length},
                              {"y", units_.length},
                              {"z", units_.length},
                              {"intensity", "amp^2"},
                              {"fwhm_x", units_.length},
                              {"fwhm_y", units_.length},
                              {"fwhm_z", units_.length}}) {}

  void take(int k, const Slice& slice) override;
  [[nodiscard]] SliceRequest required(int /*k*/) const override { return {true}; }
  void finish() override;
  SinkState save() override;
  void restore(const SinkState& state) override;

 private:
  void remember(const Slice& slice);
  void look_for_brighter(int k, const Slice& slice);
  [[nodiscard]] std::size_t place_in_box(int i, int j) const {
    return static_cast<std::size_t>(j - box_.y.first) * static_cast<std::size_t>(box_.x.count) +
           static_cast<std::size_t>(i - box_.x.first);
  }

  Grid grid_;
  Box box_;
  TableUnits units_;
  std::string name_;
  Table table_;
  Candidate best_;
  // The intensity in the box's columns of the slices before, as far back as kHistoryBytes reach:
  // which column is the brightest is known only at its peak.
  std::deque<std::vector<float>> before_;
  // Along z through the candidate, from the oldest slice known at its time to the newest; the
  // candidate is number along_peak_.
  std::vector<double> along_;
  int along_peak_ = 0;
};

constexpr std::size_t kHistoryBytes = std::size_t{1} << 26U;

void FocusSink::take(int k, const Slice& slice) {
  table_.file();
  if (best_.intensity >= 0)
    along_.push_back(
        std::norm(slice.E[static_cast<std::size_t>(best_.j) * static_cast<std::size_t>(grid_.nx) +
                          static_cast<std::size_t>(best_.i)]));
  if (k >= box_.z.first && k < box_.z.first + box_.z.count) look_for_brighter(k, slice);
  remember(slice);
}

void FocusSink::look_for_brighter(int k, const Slice& slice) {
  const auto intensity = [&](int i, int j) {
    return std::norm(slice.E[static_cast<std::size_t>(j) * static_cast<std::size_t>(grid_.nx) +
                             static_cast<std::size_t>(i)]);
  };
  const double known = best_.intensity;
  for (int j = box_.y.first; j < box_.y.first + box_.y.count; ++j)
    for (int i = box_.x.first; i < box_.x.first + box_.x.count; ++i)
      if (intensity(i, j) > best_.intensity) best_ = {intensity(i, j), i, j, k, {}, {}, 0, 0};
  if (!(best_.intensity > known)) return;

  const auto along_x = [&](int i) { return intensity(i, best_.j); };
  const auto along_y = [&](int j) { return intensity(best_.i, j); };
  if (best_.i > 0 && best_.i + 1 < grid_.nx)
    best_.x = fit(along_x(best_.i - 1), best_.intensity, along_x(best_.i + 1));
  if (best_.j > 0 && best_.j + 1 < grid_.ny)
    best_.y = fit(along_y(best_.j - 1), best_.intensity, along_y(best_.j + 1));
  best_.width_x = full_width(along_x, grid_.nx, best_.i);
  best_.width_y = full_width(along_y, grid_.ny, best_.j);

  along_.clear();
  for (const std::vector<float>& earlier : before_)
    along_.push_back(static_cast<double>(earlier[place_in_box(best_.i, best_.j)]));
  along_peak_ = static_cast<int>(along_.size());
  along_.push_back(best_.intensity);
}

void FocusSink::remember(const Slice& slice) {
  std::vector<float> intensities;
  if ((before_.size() + 1) * box_.samples() * sizeof(float) > kHistoryBytes && !before_.empty()) {
    intensities = std::move(before_.front());
    before_.pop_front();
  }
  intensities.clear();
  intensities.reserve(box_.samples());
  for (int j = box_.y.first; j < box_.y.first + box_.y.count; ++j) {
    const cpx* row = slice.E + static_cast<std::size_t>(j) * static_cast<std::size_t>(grid_.nx);
    for (int i = box_.x.first; i < box_.x.first + box_.x.count; ++i)
      intensities.push_back(static_cast<float>(std::norm(row[i])));
  }
  before_.push_back(std::move(intensities));
}

void FocusSink::finish() {
  if (best_.intensity > 0) {
    const auto along_z = [this](int k) { return along_[static_cast<std::size_t>(k)]; };
    const int count = static_cast<int>(along_.size());
    const bool is_inside = along_peak_ > 0 && along_peak_ + 1 < count;
    const Fit z = is_inside
                      ? fit(along_z(along_peak_ - 1), best_.intensity, along_z(along_peak_ + 1))
                      : Fit{};
    const double width_z = full_width(along_z, count, along_peak_);
    // Half of the way back may lie further off than the slices that were kept.
    if (std::isnan(width_z) && best_.k > along_peak_)
      diagnostics::warn(name_ + ": the width along z is longer than the " +
                        std::to_string(along_peak_) +
                        " slices that are kept; give the monitor a smaller box in x and y");
    const double dx = grid_.dx / units_.metres;
    const double dy = grid_.dy / units_.metres;
    const double dz = grid_.dz / units_.metres;
    table_.add_row(
        {static_cast<double>(best_.k), grid_.x(best_.i) / units_.metres + best_.x.offset * dx,
         grid_.y(best_.j) / units_.metres + best_.y.offset * dy, (best_.k + z.offset) * dz,
         best_.intensity * best_.x.gain * best_.y.gain * z.gain, best_.width_x * dx,
         best_.width_y * dy, width_z * dz});
  } else {
    table_.add_row(std::vector<double>(8, std::nan("")));
  }
  table_.finish();
}

SinkState FocusSink::save() {
  ByteWriter state;
  table_.save(state);
  state.put(best_);
  state.put(along_peak_);
  state.put(along_.size());
  state.put_all(along_);
  for (const std::vector<float>& slice : before_) state.put_all(slice);
  return state.bytes();
}

void FocusSink::restore(const SinkState& state) {
  ByteReader from(state);
  table_.restore(from);
  best_ = from.take<Candidate>();
  along_peak_ = from.take<int>();
  from.take_all(along_, from.take<std::size_t>());
  before_.clear();
  while (!from.is_at_end()) from.take_all(before_.emplace_back(), box_.samples());
}

}  // namespace

std::unique_ptr<Sink> make_focus_sink(const Monitor& monitor, const Grid& grid,
                                      const RunContext& /*run*/, const std::string& where) {
  return std::make_unique<FocusSink>(monitor, grid, where);
}
