#include <algorithm>
#include <cmath>

#include "diagnostics.h"
#include "system/index_file.h"

namespace {

data::Dataset open(const struct_sysOptions& so, const struct_layer& l) {
  return {data::beside(so.sysname, l.file), l.dataset.empty() ? "/n" : l.dataset,
          data::Layout::kVolume, data::place(so.sysname, l.line)};
}

// Keys of the layer override attributes of the file. A grid without an origin is centred like that
// of the run.
data::Sampling sampling_of(const data::Dataset& set, const struct_sysOptions& so,
                           const struct_layer& l, const Frame& frame) {
  data::Sampling sampling = set.sampling().value_or(data::Sampling{{0, 0, frame.dz}, {}});
  if (l.file_dx > 0 && l.file_dy > 0) {
    sampling.spacing[0] = l.file_dx * so.f;
    sampling.spacing[1] = l.file_dy * so.f;
    const int middle_column = set.columns() / 2;
    const int middle_row = set.rows() / 2;
    sampling.origin[0] = -middle_column * sampling.spacing[0];
    sampling.origin[1] = -middle_row * sampling.spacing[1];
  } else if (!set.sampling()) {
    diagnostics::fail(data::place(so.sysname, l.line) + ": " + set.name() +
                      " has no attribute Spacing; say by dx, dy and dz how far its samples are "
                      "from one another");
  }
  if (l.file_dz > 0) sampling.spacing[2] = l.file_dz * so.f;
  return sampling;
}

// A position within rounding of a sample is that sample's.
double settled(double place) {
  constexpr double kClose = 1e-6;
  const double nearest = std::nearbyint(place);
  return std::fabs(place - nearest) < kClose ? nearest : place;
}

}  // namespace

IndexVolume::IndexVolume(const struct_sysOptions& so, const struct_layer& l)
    : frame_(so),
      is_permittivity_(so.permittivity),
      offset_x_(l.offsetx * so.f),
      offset_y_(l.offsety * so.f),
      set_(open(so, l)),
      sampling_(sampling_of(set_, so, l, frame_)) {}

double IndexVolume::depth() const {
  return settled(set_.slices() * sampling_.spacing[2] / frame_.dz);
}

double IndexVolume::slice_of(int slice_of_layer) const {
  return settled(slice_of_layer * frame_.dz / sampling_.spacing[2]);
}

double IndexVolume::row_of(int iy) const {
  const int middle = frame_.ny / 2;
  const double y = (iy - middle) * frame_.dy - offset_y_;
  return settled((y - sampling_.origin[1]) / sampling_.spacing[1]);
}

double IndexVolume::column_of(int ix) const {
  const int middle = frame_.nx / 2;
  const double x = (ix - middle) * frame_.dx - offset_x_;
  return settled((x - sampling_.origin[0]) / sampling_.spacing[0]);
}

void IndexVolume::read(int k, std::vector<cpx>& indices) const {
  const std::size_t samples =
      static_cast<std::size_t>(set_.rows()) * static_cast<std::size_t>(set_.columns());
  const std::size_t numbers = set_.is_complex() ? 2 : 1;
  std::vector<double> values(samples * numbers);
  set_.read(k, 1, values.data());
  indices.resize(samples);
  for (std::size_t i = 0; i < samples; ++i) {
    const cpx value = {values[i * numbers], numbers == 2 ? values[i * 2 + 1] : 0.0};
    indices[i] = is_permittivity_ ? epsToN(value) : value;
  }
}

void Palette::see(const std::vector<cpx>& values) {
  const auto is_less = [](const cpx& a, const cpx& b) {
    return a.real() != b.real() ? a.real() < b.real() : a.imag() < b.imag();
  };
  const cpx* last = nullptr;
  for (const cpx& value : values) {
    if (last != nullptr && value == *last) continue;
    last = &value;
    least_n_ = is_empty_ ? value.real() : std::min(least_n_, value.real());
    most_n_ = is_empty_ ? value.real() : std::max(most_n_, value.real());
    least_k_ = is_empty_ ? value.imag() : std::min(least_k_, value.imag());
    most_k_ = is_empty_ ? value.imag() : std::max(most_k_, value.imag());
    is_empty_ = false;
    if (!is_exact()) continue;
    const auto place = std::lower_bound(seen_.begin(), seen_.end(), value, is_less);
    if (place == seen_.end() || *place != value) seen_.insert(place, value);
  }
}

double Palette::step() const {
  return levels_ > 1 ? (most_n_ - least_n_) / (levels_ - 1) : 0.0;
}

cpx Palette::round(const cpx& value, bool is_sample) const {
  if (is_sample && is_exact()) return value;
  const auto to_step = [this](double v, double least, double most) {
    if (!(most > least)) return least;
    if (levels_ == 1) return 0.5 * (least + most);
    const double steps = levels_ - 1;
    const double step = std::nearbyint((v - least) / (most - least) * steps);
    return least + (most - least) * (std::clamp(step, 0.0, steps) / steps);
  };
  return {to_step(value.real(), least_n_, most_n_), to_step(value.imag(), least_k_, most_k_)};
}
