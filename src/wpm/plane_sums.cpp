#include "wpm/plane_sums.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "wpm/loops.h"
#include "wpm/threads.h"
#include "wpm/wisdom_of_ranks.h"

namespace wpm {
namespace {

constexpr double kColumnPass = 4.0;  // ns a sample

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

// A column's plane waves are read once for all sums of a batch; what that saves is little on planes
// that would take much memory.
int planes_for(const Axis& x, const Axis& y) {
  constexpr double kBytes = 64e6;
  return static_cast<int>(std::clamp(kBytes / (16.0 * x.n * y.n), 1.0, 8.0));
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
      batch_(planes_for(x, y)) {
  Workspace& work = workspaces_.front();
  // Rows lie side by side in the plane.
  const fftwpp::many_layout rows = {x.n, kBatch, kBatch, 1, 1, static_cast<int>(line_step(x.n))};
  plan_alike([&] {
    column_ = inverse_of_lines(y.n, work);
    row_ = std::make_unique<fftwpp::fft1d_many>(rows, 1, work.in.get(), work.out.get());
    column_drift_ = drift_of_lines(y.n, work);
    row_drift_ =
        std::make_unique<fftwpp::fft1f_many>(rows, 1, work.drift_in.get(), work.drift_out.get());
  });
}

void PlaneSums::columns(const BinnedSpectrum& spectrum, std::span<const Transfer* const> transfers,
                        double* flux) {
  const ranks::Share& bins = spectrum.bins();
  const ranks::Share& folds = spectrum.folds();
  const int groups = groups_of(bins.size());
  while (planes_.size() < transfers.size())
    planes_.push_back({TurningPlane(x_.n, y_.n), std::vector<char>(at(groups)),
                       std::vector<double>(at(folds.size()))});
  const double work = kColumnPass * bins.size() * y_.n * static_cast<double>(transfers.size());
  share_out(groups, work, [&](int place, int worker) {
    const int group = mirrored(place, groups);
    const int first = bins.begin + group * kBatch;
    for (std::size_t sum = 0; sum < transfers.size(); ++sum) {
      Plane& plane = planes_[sum];
      transform_columns(group, spectrum, *transfers[sum], plane, workspaces_[at(worker)]);
      if (flux == nullptr) continue;
      for (int bin = first; bin < std::min(bins.end, first + kBatch); ++bin) {
        const int fold = std::min(bin, x_.n - bin);
        if (bin != fold && bins.holds(fold)) continue;  // its power is in that of the mirror image
        plane.flux_of_folds[at(fold - folds.begin)] = flux_of_fold(fold, spectrum, *transfers[sum]);
      }
    }
  });
  for (std::size_t sum = 0; sum < transfers.size(); ++sum) planes_[sum].values.exchange();
  if (flux == nullptr) return;
  // In one order, so that the sum does not depend on the threads.
  for (std::size_t sum = 0; sum < transfers.size(); ++sum)
    flux[sum] =
        std::accumulate(planes_[sum].flux_of_folds.begin(), planes_[sum].flux_of_folds.end(), 0.0);
  ranks::sum(flux, transfers.size());
}

double PlaneSums::flux_of_fold(int fold, const BinnedSpectrum& spectrum,
                               const Transfer& transfer) const {
  return weighted_sum(y_.folds, spectrum.power(fold),
                      transfer.flux.data() + at(fold - spectrum.folds().begin) * at(y_.folds));
}

double PlaneSums::flux(const BinnedSpectrum& spectrum, const Transfer& transfer) {
  double sum = 0.0;
  for (int fold = spectrum.folds().begin; fold < spectrum.folds().end; ++fold)
    sum += flux_of_fold(fold, spectrum, transfer);
  return ranks::sum(sum);
}

void PlaneSums::transform_columns(int group, const BinnedSpectrum& spectrum,
                                  const Transfer& transfer, Plane& plane, Workspace& work) {
  const std::size_t step = line_step(y_.n);
  bool is_live = false;
  for (int line = 0; line < kBatch; ++line) {
    const int bin = spectrum.bins().begin + group * kBatch + line;
    cpx* in = work.in.get() + at(line) * step;
    std::complex<float>* drift_in = work.drift_in.get() + at(line) * step;
    const std::size_t fold = at(std::min(bin, x_.n - bin) - spectrum.folds().begin);
    if (!spectrum.is_empty(bin) && transfer.is_blank[fold] == 0) {
      apply_transfer(y_.n, spectrum.column(bin), transfer.field.data() + fold * at(y_.folds),
                     number_y_.data(), in, drift_in);
      is_live = true;
    } else {
      std::fill_n(in, y_.n, 0.0);
      std::fill_n(drift_in, y_.n, std::complex<float>());
    }
  }
  const bool was_live = plane.is_live[at(group)] != 0;
  plane.is_live[at(group)] = is_live ? 1 : 0;
  if (!is_live && !was_live) return;
  const std::size_t block_step = plane.values.block_step();
  if (!is_live) {
    for (int reader = 0; reader < groups_of(y_.n); ++reader)
      std::fill_n(plane.values.block(group, reader), kBatch * kBatch, 0.0);
    return;
  }
  column_->fft(work.in.get(), work.out.get());
  column_drift_->fft(work.drift_in.get(), work.drift_out.get());
  correct_into_blocks(groups_of(y_.n) * kBatch, work.out.get(), work.drift_out.get(), step,
                      drift_y_.data(), plane.values.block(group, 0), block_step);
}

void PlaneSums::RowGroup::prepare(int plane_number) {
  cpx* lines = sums_.planes_[at(plane_number)].values.lines(group_);
  drift_lines(sums_.x_.n, lines, sums_.number_x_.data(), work_.drift_in.get());
  sums_.row_->fft(lines, work_.out.get());
  sums_.row_drift_->fft(work_.drift_in.get(), work_.drift_out.get());
}

PlaneSums::Row PlaneSums::RowGroup::row(int line) const {
  const std::size_t begin = at(line) * line_step(sums_.x_.n);
  return {work_.out.get() + begin, work_.drift_out.get() + begin, sums_.drift_x_.data()};
}

// Rows are transformed from where they lie in the plane.
cpx* PlaneSums::RowGroup::room(int line) const {
  return work_.in.get() + at(line) * line_step(sums_.x_.n);
}

}  // namespace wpm
