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

}  // namespace

SliceReporter::SliceReporter(const Plane& plane, Status& status) : plane_(plane), status_(status) {
  const char* doing = "make room for the planes of a slice";
  status_.reserve(report_, 1, doing);
  if (status_.is_good()) status_.take(report_.clear(), doing);
  const auto strands = static_cast<std::size_t>(strands_of(plane_.samples()));
  for (Array<double>& level : sums_) status_.reserve(level, strands, doing);
}

void SliceReporter::look_over(const Survey& survey, const double2* E, const double* F, int step) {
  const int samples = plane_.nx * plane_.ny;
  if (survey.health) {
    const int threads = strands_of(plane_.samples());
    status_.launch(look_at_field, blocks_over_line(threads), dim3(kLineBlock), report_.data(), E,
                   samples, threads, step);
  }
  if (!survey.flux) return;
  double* const flux = &report_.data()->flux;
  const double* terms = F;
  int count = samples;
  for (int level = 0; terms != flux; level = 1 - level) {
    const int fewer = strands_of(static_cast<std::size_t>(count));
    double* sums = fewer == 1 ? flux : sums_[level].data();
    status_.launch(add_strands, blocks_over_line(fewer), dim3(kLineBlock), sums, terms, count,
                   fewer);
    terms = sums;
    count = fewer;
  }
}

Findings SliceReporter::findings(int step) {
  SliceReport report{};
  if (status_.is_good()) status_.take(report_.download(&report), "tell of a slice");
  return {report.flux, report.not_finite != step, report.light == step};
}

}  // namespace device
