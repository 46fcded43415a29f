#include "wpm/binned_spectrum.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "wpm/loops.h"
#include "wpm/modes.h"
#include "wpm/threads.h"
#include "wpm/wisdom_of_ranks.h"

namespace wpm {
namespace {

constexpr double kPass = 2.0;  // ns a sample, of the cheapest of the passes here

bool is_turned_here(const Axis& x, const Axis& y) {
  return x.n == y.n && x.n % 2 == 0;
}

// The folds of a range of the n bins of an axis.
ranks::Share folds_of(const ranks::Share& bins, int n) {
  ranks::Share folds = {n, 0};
  for (int bin = bins.begin; bin < bins.end; ++bin) {
    folds.begin = std::min({folds.begin, bin, n - bin});
    folds.end = std::max(folds.end, std::min(bin, n - bin) + 1);
  }
  return bins.size() > 0 ? folds : ranks::Share();
}

}  // namespace

BinnedSpectrum::BinnedSpectrum(const Axis& x, const Axis& y, std::vector<Workspace>& workspaces)
    : x_(x),
      y_(y),
      workspaces_(workspaces),
      rows_(ranks::share(y.n).size()),
      bins_(ranks::share(x.n)),
      folds_(folds_of(bins_, x.n)),
      f_(allocate_aligned<cpx>(at(bins_.size()) * at(y.n))),
      power_(allocate_aligned<double>(at(folds_.size()) * at(y.n))),
      kept_in_(at(bins_.size())),
      is_tame_in_(at(bins_.size())),
      has_power_(at(folds_.size())),
      plane_(is_turned_here(x, y) ? y.n : 0, x.n) {
  if (!is_turned_here(x, y)) {
    whole_ = std::make_unique<Spectrum>(y.n, x.n);
    power_of_bin_ = allocate_aligned<double>(at(bins_.size()) * at(y.n));
    return;
  }
  const auto step = static_cast<int>(line_step(x.n));
  Workspace& work = workspaces_.front();
  plan_alike([&] {
    rows_of_slice_ = std::make_unique<fftwpp::fft1d_many>(
        fftwpp::many_layout{x.n, kBatch, 1, x.n, 1, step}, -1, work.in.get(), work.out.get());
    columns_ = std::make_unique<fftwpp::fft1d_many>(
        fftwpp::many_layout{y.n, kBatch, kBatch, 1, 1, step}, -1, work.in.get(), work.out.get());
  });
}

const double* BinnedSpectrum::power(int fold_x) const {
  const std::size_t fold = at(fold_x - folds_.begin);
  double* power = power_.get() + fold * at(y_.n);
  if (has_power_[fold] == 0) find_power(fold_x, power);
  has_power_[fold] = 1;
  return power;
}

void BinnedSpectrum::take(cpx* E) {
  if (whole_ != nullptr) {
    const cpx* S = whole_->of(E);
    share_out(bins_.size(), 5 * kPass * bins_.size() * y_.n,
              [&](int bin_x, int /*worker*/) { bin(bins_.begin + bin_x, S); });
  } else {
    share_out(groups_of(rows_), kPass * rows_ * x_.n,
              [&](int group, int worker) { transform_rows(group, E, workspaces_[at(worker)]); });
    plane_.exchange();
    const int groups = groups_of(bins_.size());
    share_out(groups, kPass * bins_.size() * y_.n, [&](int place, int worker) {
      transform_columns(mirrored(place, groups), workspaces_[at(worker)]);
    });
  }
  const std::size_t kept = std::accumulate(kept_in_.begin(), kept_in_.end(), std::size_t{0});
  kept_ = static_cast<std::size_t>(ranks::sum(static_cast<double>(kept)));
  is_tame_ = ranks::all(std::find(is_tame_in_.begin(), is_tame_in_.end(), 0) == is_tame_in_.end());
  std::fill(has_power_.begin(), has_power_.end(), 0);
}

void BinnedSpectrum::transform_rows(int group, cpx* E, Workspace& work) {
  const std::size_t row_size = at(x_.n);
  cpx* rows = E + at(group * kBatch) * row_size;
  const int count = lines_of_group(rows_, group);
  const bool is_aligned = reinterpret_cast<std::uintptr_t>(rows) % sizeof(cpx) == 0;
  if (count < kBatch || !is_aligned) {
    std::copy_n(rows, at(count) * row_size, work.in.get());
    rows = work.in.get();
  }
  rows_of_slice_->fft(rows, work.out.get());
  copy_into_blocks(groups_of(x_.n) * kBatch, work.out.get(), line_step(x_.n),
                   plane_.block(group, 0), plane_.block_step());
}

void BinnedSpectrum::transform_columns(int group, Workspace& work) {
  const std::size_t step = line_step(y_.n);
  columns_->fft(plane_.lines(group), work.out.get());
  const double to_amplitude = 1.0 / (static_cast<double>(x_.n) * y_.n);
  for (int line = 0; line < lines_of_group(bins_.size(), group); ++line) {
    const std::size_t bin = at(group * kBatch + line);
    const Taken taken = take_amplitudes(y_.n, work.out.get() + at(line) * step, to_amplitude,
                                        f_.get() + bin * at(y_.n));
    kept_in_[bin] = taken.kept;
    is_tame_in_[bin] = taken.is_tame ? 1 : 0;
  }
}

// Brings the frequencies that have the bin to it, with their phases. On odd sizes the last one
// shares bin 0 with the first.
void BinnedSpectrum::bin(int bin_x, const cpx* S) {
  const double to_amplitude = 1.0 / (static_cast<double>(x_.n) * y_.n);
  const std::size_t own_bin = own(bin_x);
  cpx* f = f_.get() + own_bin * at(y_.n);
  double* power = power_of_bin_.get() + own_bin * at(y_.n);
  std::fill_n(f, y_.n, 0.0);
  std::fill_n(power, y_.n, 0.0);
  kept_in_[own_bin] = 0;
  is_tame_in_[own_bin] = 1;
  for (int p = 0; p < x_.n; ++p) {
    if (x_.bin[at(p)] != bin_x) continue;
    for (int q = 0; q < y_.n; ++q) {
      const cpx s = S[at(q) * at(x_.n) + at(p)];
      if (is_weak(s)) continue;
      const cpx amplitude = s * to_amplitude;
      const double modulus_sq = std::norm(amplitude);
      if (!(modulus_sq < kTameAmplitude * kTameAmplitude)) is_tame_in_[own_bin] = 0;
      power[y_.bin[at(q)]] += modulus_sq;
      f[y_.bin[at(q)]] += amplitude * (x_.phase[at(p)] * y_.phase[at(q)]);
      ++kept_in_[own_bin];
    }
  }
}

void BinnedSpectrum::find_power(int fold_x, double* power) const {
  const int mirror = (x_.n - fold_x) % x_.n;
  const int first = is_empty(fold_x) ? mirror : fold_x;
  const bool has_second = !is_empty(fold_x) && mirror != fold_x && !is_empty(mirror);
  if (is_empty(first)) {
    std::fill_n(power, y_.n, 0.0);
  } else if (whole_ == nullptr) {
    power_of(y_.n, column(first), has_second ? column(mirror) : nullptr, power);
  } else {
    const double* of_first = power_of_bin_.get() + own(first) * at(y_.n);
    std::copy_n(of_first, y_.n, power);
    const double* of_mirror = power_of_bin_.get() + (has_second ? own(mirror) * at(y_.n) : 0);
    for (int bin_y = 0; has_second && bin_y < y_.n; ++bin_y) power[bin_y] += of_mirror[bin_y];
  }
  fold_power(y_.n, power);
}

}  // namespace wpm
