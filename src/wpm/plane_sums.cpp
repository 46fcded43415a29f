#include "wpm/plane_sums.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "wpm/loops.h"
#include "wpm/threads.h"

namespace wpm {
namespace {

constexpr double kColumnPass = 4.0;  // ns a sample

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

// As many planes as stay in a core's own cache, or a few.
int planes_for(const Axis& x, const Axis& y) {
  constexpr double kBytes = 1.5e6;
  const double bytes = 16.0 * x.n * y.n;
  return static_cast<int>(std::clamp(kBytes / bytes, 1.0, 8.0));
}

}  // namespace

PlaneSums::PlaneSums(const Axis& x, const Axis& y, std::vector<Workspace>& workspaces)
    : x_(x),
      y_(y),
      workspaces_(workspaces),
      number_x_(numbers_twice(x)),
      number_y_(numbers_twice(y)),
      drift_x_(drift_with_both_signs(x)),
      drift_y_(drift_with_both_signs(y)),
      flux_of_fold_(at(x.folds)) {
  for (int plane = 0; plane < planes_for(x, y); ++plane)
    planes_.push_back({TurningPlane(x.n, y.n), std::vector<char>(at(groups_of(x.n)))});
  Workspace& work = workspaces_.front();
  column_ = inverse_of_lines(y.n, work);
  row_ = inverse_of_lines(x.n, work);
  column_drift_ = drift_of_lines(y.n, work);
  row_drift_ = drift_of_lines(x.n, work);
}

double PlaneSums::columns(int plane, const BinnedSpectrum& spectrum, const Transfer& transfer) {
  const int groups = groups_of(x_.n);
  share_out(groups, kColumnPass * x_.n * y_.n, [&](int group, int worker) {
    transform_columns(group, spectrum, transfer, planes_[at(plane)], workspaces_[at(worker)]);
    for (int fold = group * kBatch; fold < std::min(x_.folds, (group + 1) * kBatch); ++fold)
      flux_of_fold_[at(fold)] = weighted_sum(y_.folds, spectrum.power(fold),
                                             transfer.flux.data() + at(fold) * at(y_.folds));
  });
  // In one order, so that the sum does not depend on the threads.
  return std::accumulate(flux_of_fold_.begin(), flux_of_fold_.end(), 0.0);
}

double PlaneSums::flux(const BinnedSpectrum& spectrum, const Transfer& transfer) {
  double sum = 0.0;
  for (int fold = 0; fold < x_.folds; ++fold)
    sum += weighted_sum(y_.folds, spectrum.power(fold),
                        transfer.flux.data() + at(fold) * at(y_.folds));
  return sum;
}

void PlaneSums::transform_columns(int group, const BinnedSpectrum& spectrum,
                                  const Transfer& transfer, Plane& plane, Workspace& work) {
  const std::size_t step = line_step(y_.n);
  bool is_live = false;
  for (int line = 0; line < kBatch; ++line) {
    const int bin = group * kBatch + line;
    cpx* in = work.in.get() + at(line) * step;
    std::complex<float>* drift_in = work.drift_in.get() + at(line) * step;
    const int fold = std::min(bin, x_.n - bin);
    if (bin < x_.n && !spectrum.is_empty(bin) && transfer.is_blank[at(fold)] == 0) {
      apply_transfer(y_.n, spectrum.column(bin), transfer.field.data() + at(fold) * at(y_.folds),
                     number_y_.data(), in, drift_in);
      is_live = true;
    } else {
      std::fill_n(in, y_.n, 0.0);
      std::fill_n(drift_in, y_.n, std::complex<float>());
    }
  }
  plane.is_live[at(group)] = is_live ? 1 : 0;
  if (!is_live) return;
  column_->fft(work.in.get(), work.out.get());
  column_drift_->fft(work.drift_in.get(), work.drift_out.get());
  correct_into_blocks(groups_of(y_.n) * kBatch, work.out.get(), work.drift_out.get(), step,
                      drift_y_.data(), plane.values.block(group, 0));
}

void PlaneSums::RowGroup::prepare(int plane_number) {
  Plane& plane = sums_.planes_[at(plane_number)];
  plane.values.read(group_, plane.is_live, line_step(sums_.x_.n), work_.in.get(),
                    sums_.number_x_.data(), work_.drift_in.get());
  sums_.row_->fft(work_.in.get(), work_.out.get());
  sums_.row_drift_->fft(work_.drift_in.get(), work_.drift_out.get());
}

PlaneSums::Row PlaneSums::RowGroup::row(int line) const {
  const std::size_t begin = at(line) * line_step(sums_.x_.n);
  return {work_.out.get() + begin, work_.drift_out.get() + begin, sums_.drift_x_.data()};
}

// What the transform was made from is done with.
cpx* PlaneSums::RowGroup::room(int line) const {
  return work_.in.get() + at(line) * line_step(sums_.x_.n);
}

}  // namespace wpm
