#include "wpm/rank_spectrum.h"

#include <algorithm>
#include <cmath>

#include "wpm/loops.h"
#include "wpm/modes.h"
#include "wpm/threads.h"

namespace wpm {
namespace {

constexpr double kPass = 2.0;  // ns a sample, of the cheapest of the passes here

std::unique_ptr<fftwpp::fft1d_many> forward(int n, Workspace& work) {
  const auto step = static_cast<int>(line_step(n));
  return std::make_unique<fftwpp::fft1d_many>(fftwpp::many_layout{n, kBatch, 1, step, 1, step}, -1,
                                              work.in.get(), work.out.get());
}

}  // namespace

RankSpectrum::RankSpectrum(const Axis& x, const Axis& y, const FoldedFrequencies& folds,
                           std::vector<Workspace>& workspaces)
    : x_(x),
      y_(y),
      workspaces_(workspaces),
      columns_(ranks::share(x.n)),
      own_(ranks::share(y.n)),
      is_even_(x.n % 2 == 0 && y.n % 2 == 0),
      f_(allocate_aligned<cpx>(at(own_.size()) * at(x.n))),
      power_of_line_(is_even_ ? 0 : at(own_.size()) * at(x.n)),
      power_(folds.kx.size() * at(x.n)),
      kept_in_(at(own_.size())),
      is_tame_in_(at(own_.size())),
      along_x_(forward(x.n, workspaces.front())),
      along_y_(forward(y.n, workspaces.front())) {
  for (int q = own_.begin; q < own_.end; ++q) {
    const int fold = y.fold[at(y.bin[at(q)])];
    fold_of_.push_back(static_cast<int>(
        std::lower_bound(folds.fold_x.begin(), folds.fold_x.end(), fold) - folds.fold_x.begin()));
  }
}

void RankSpectrum::take(const cpx* E, ranks::Transpose& exchange) {
  share_out(groups_of(columns_.size()), kPass * columns_.size() * y_.n, [&](int group, int worker) {
    transform_columns(group, E, exchange.in(), workspaces_[at(worker)]);
  });
  exchange.to_columns();
  share_out(groups_of(own_.size()), kPass * own_.size() * x_.n, [&](int group, int worker) {
    transform_lines(group, exchange.out(), workspaces_[at(worker)]);
  });
  double kept = 0;
  for (const std::size_t count : kept_in_) kept += static_cast<double>(count);
  kept_ = ranks::sum(kept);
  is_tame_ = ranks::all(std::find(is_tame_in_.begin(), is_tame_in_.end(), 0) == is_tame_in_.end());
  find_power();
}

void RankSpectrum::transform_columns(int group, const cpx* E, cpx* out, Workspace& work) const {
  const std::size_t step = line_step(y_.n);
  const int first = group * kBatch;
  const int count = lines_of_group(columns_.size(), group);
  for (int j = 0; j < y_.n; ++j)
    for (int line = 0; line < count; ++line)
      work.in[at(line) * step + at(j)] = E[at(j) * at(columns_.size()) + at(first + line)];
  along_y_->fft(work.in.get(), work.out.get());
  for (int line = 0; line < count; ++line)
    std::copy_n(work.out.get() + at(line) * step, y_.n, out + at(first + line) * at(y_.n));
}

void RankSpectrum::transform_lines(int group, const cpx* S, Workspace& work) {
  const std::size_t step = line_step(x_.n);
  const int first = group * kBatch;
  const int count = lines_of_group(own_.size(), group);
  for (int line = 0; line < count; ++line)
    std::copy_n(S + at(first + line) * at(x_.n), x_.n, work.in.get() + at(line) * step);
  along_x_->fft(work.in.get(), work.out.get());
  const double to_amplitude = 1.0 / (static_cast<double>(x_.n) * y_.n);
  for (int line = 0; line < count; ++line) {
    const cpx* raw = work.out.get() + at(line) * step;
    const int own = first + line;
    if (!is_even_) {
      bin(own, raw);
      continue;
    }
    const Taken taken = take_amplitudes(x_.n, raw, to_amplitude, f_.get() + at(own) * at(x_.n));
    kept_in_[at(own)] = taken.kept;
    is_tame_in_[at(own)] = taken.is_tame ? 1 : 0;
  }
}

// Odd sizes: frequencies have phases, and the last of x shares bin 0 with the first.
void RankSpectrum::bin(int own, const cpx* S) {
  const double to_amplitude = 1.0 / (static_cast<double>(x_.n) * y_.n);
  const cpx phase_y = y_.phase[at(own_.begin + own)];
  cpx* f = f_.get() + at(own) * at(x_.n);
  double* power = power_of_line_.data() + at(own) * at(x_.n);
  std::fill_n(f, x_.n, 0.0);
  std::fill_n(power, x_.n, 0.0);
  kept_in_[at(own)] = 0;
  is_tame_in_[at(own)] = 1;
  for (int p = 0; p < x_.n; ++p) {
    if (is_weak(S[p])) continue;
    const cpx amplitude = S[p] * to_amplitude;
    const double modulus_sq = std::norm(amplitude);
    if (!(modulus_sq < kTameAmplitude * kTameAmplitude)) is_tame_in_[at(own)] = 0;
    power[x_.bin[at(p)]] += modulus_sq;
    f[x_.bin[at(p)]] += amplitude * (x_.phase[at(p)] * phase_y);
    ++kept_in_[at(own)];
  }
}

void RankSpectrum::find_power() {
  std::fill(power_.begin(), power_.end(), 0.0);
  for (int own = 0; own < own_.size(); ++own) {
    if (is_empty(own)) continue;
    double* power = power_.data() + at(fold(own)) * at(x_.n);
    if (is_even_) {
      for (int b = 0; b < x_.n; ++b) power[b] += std::norm(line(own)[b]);
      continue;
    }
    const double* of_line = power_of_line_.data() + at(own) * at(x_.n);
    for (int b = 0; b < x_.n; ++b) power[b] += of_line[b];
  }
  for (std::size_t fold = 0; fold * at(x_.n) < power_.size(); ++fold)
    fold_power(x_.n, power_.data() + fold * at(x_.n));
}

double RankSpectrum::flux(const Transfer& transfer) const {
  double sum = 0.0;
  for (std::size_t fold = 0; fold * at(x_.n) < power_.size(); ++fold)
    sum += weighted_sum(x_.folds, power_.data() + fold * at(x_.n),
                        transfer.flux.data() + fold * at(x_.folds));
  return sum;
}

}  // namespace wpm
