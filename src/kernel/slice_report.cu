#include "kernel/slice_report.h"

namespace device {
namespace {

constexpr double kLargest = 1.7976931348623157e308;

__global__ void look_at_field(SliceReport* report, const double2* E, int samples, int threads,
                              int step) {
  const int thread = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (thread >= threads) return;
  bool is_finite = true;
  bool is_light = false;
  for (int sample = thread; sample < samples; sample += threads) {
    const double2 e = E[sample];
    is_finite = is_finite && fabs(e.x) <= kLargest && fabs(e.y) <= kLargest;
    is_light = is_light || e.x != 0.0 || e.y != 0.0;
  }
  if (!is_finite) store_from_any(&report->not_finite, step);
  if (is_light) store_from_any(&report->light, step);
}

// In strands, as flux_strands adds: taken [threads].
__global__ void lay_edge(double* taken, double2* E, const double* of_columns, const double* of_rows,
                         int nx, int samples, int threads) {
  const int thread = static_cast<int>(blockIdx.x * blockDim.x + threadIdx.x);
  if (thread >= threads) return;
  double sum = 0.0;
  for (int sample = thread; sample < samples; sample += threads) {
    const double factor = of_columns[sample % nx] * of_rows[sample / nx];
    if (factor == 1.0) continue;
    const double2 e = E[sample];
    sum += (e.x * e.x + e.y * e.y) * (1.0 - factor * factor);
    E[sample] = {e.x * factor, e.y * factor};
  }
  taken[thread] = sum;
}

}  // namespace

SliceReporter::SliceReporter(const Plane& plane, Status& status) : plane_(plane), status_(status) {
  const char* doing = "make room for the planes of a slice";
  status_.reserve(report_, 1, doing);
  if (status_.is_good()) status_.take(report_.clear(), doing);
  const auto strands = static_cast<std::size_t>(strands_of(plane_.samples()));
  for (Array<double>& level : sums_) status_.reserve(level, strands, doing);
}

void SliceReporter::set_edge(const double* of_columns, const double* of_rows) {
  const char* doing = "take the edge";
  const auto upload = [&](Array<double>& array, const double* host, int n) {
    status_.reserve(array, static_cast<std::size_t>(n), doing);
    if (status_.is_good()) status_.take(array.upload(host, static_cast<std::size_t>(n)), doing);
  };
  upload(edge_x_, of_columns, plane_.nx);
  upload(edge_y_, of_rows, plane_.ny);
}

void SliceReporter::look_over(const Survey& survey, double2* E, const double* F, int step) {
  const int samples = plane_.nx * plane_.ny;
  const int threads = strands_of(plane_.samples());
  if (survey.has_edge) {
    status_.launch(lay_edge, blocks_over_line(threads), dim3(kLineBlock), sums_[0].data(), E,
                   edge_x_.data(), edge_y_.data(), plane_.nx, samples, threads);
    add_up(&report_.data()->taken, sums_[0].data(), threads);
  }
  if (survey.health)
    status_.launch(look_at_field, blocks_over_line(threads), dim3(kLineBlock), report_.data(), E,
                   samples, threads, step);
  if (survey.flux) add_up(&report_.data()->flux, F, samples);
}

// By a tree whose order depends on the count alone. Terms may be the first level's.
void SliceReporter::add_up(double* to, const double* terms, int count) {
  for (int level = 1; terms != to; level = 1 - level) {
    const int fewer = strands_of(static_cast<std::size_t>(count));
    double* sums = fewer == 1 ? to : sums_[level].data();
    status_.launch(add_strands, blocks_over_line(fewer), dim3(kLineBlock), sums, terms, count,
                   fewer);
    terms = sums;
    count = fewer;
  }
}

Findings SliceReporter::findings(int step) {
  SliceReport report{};
  if (status_.is_good()) status_.take(report_.download(&report), "tell of a slice");
  return {report.flux, report.taken, report.not_finite != step, report.light == step};
}

}  // namespace device
