#include "wpm/rank_sums.h"

#include <algorithm>

#include "wpm/loops.h"

namespace wpm {
namespace {

constexpr double kPass = 4.0;  // ns a sample

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

}  // namespace

RankSums::RankSums(const Axis& x, const Axis& y, std::vector<Workspace>& workspaces)
    : x_(x),
      y_(y),
      workspaces_(workspaces),
      columns_(ranks::share(x.n)),
      number_x_(numbers_twice(x)),
      number_y_(numbers_twice(y)),
      drift_x_(drift_with_both_signs(x)),
      drift_y_(drift_with_both_signs(y)),
      along_x_(inverse_of_lines(x.n, workspaces.front())),
      along_y_(inverse_of_lines(y.n, workspaces.front())),
      along_x_drift_(drift_of_lines(x.n, workspaces.front())),
      along_y_drift_(drift_of_lines(y.n, workspaces.front())) {}

void RankSums::begin(const RankSpectrum& spectrum, const Transfer& transfer,
                     ranks::Transpose& exchange) {
  share_out(groups_of(spectrum.lines()), kPass * spectrum.lines() * x_.n,
            [&](int group, int worker) {
              transform_lines(group, spectrum, transfer, exchange.in(), workspaces_[at(worker)]);
            });
  exchange.to_rows();
}

void RankSums::transform_lines(int group, const RankSpectrum& spectrum, const Transfer& transfer,
                               cpx* exchanged, Workspace& work) {
  const std::size_t step = line_step(x_.n);
  const int count = lines_of_group(spectrum.lines(), group);
  bool is_live = false;
  for (int line = 0; line < count; ++line) {
    const int own = group * kBatch + line;
    cpx* in = work.in.get() + at(line) * step;
    std::complex<float>* drift_in = work.drift_in.get() + at(line) * step;
    const std::size_t fold = at(spectrum.fold(own));
    if (!spectrum.is_empty(own) && transfer.is_blank[fold] == 0) {
      apply_transfer(x_.n, spectrum.line(own), transfer.field.data() + fold * at(x_.folds),
                     number_x_.data(), in, drift_in);
      is_live = true;
    } else {
      std::fill_n(in, x_.n, 0.0);
      std::fill_n(drift_in, x_.n, std::complex<float>());
    }
  }
  cpx* out = exchanged + at(group * kBatch) * at(x_.n);
  std::fill_n(out, at(count) * at(x_.n), 0.0);
  if (!is_live) return;
  along_x_->fft(work.in.get(), work.out.get());
  along_x_drift_->fft(work.drift_in.get(), work.drift_out.get());
  for (int line = 0; line < count; ++line)
    add_corrected(x_.n, work.out.get() + at(line) * step, work.drift_out.get() + at(line) * step,
                  drift_x_.data(), out + at(line) * at(x_.n));
}

// Frequencies go to their bins; on odd sizes the last one shares bin 0 with the first.
void RankSums::prepare(int group, const ranks::Transpose& exchange, Workspace& work) {
  const std::size_t step = line_step(y_.n);
  const cpx* from = exchange.out() + at(group * kBatch) * at(y_.n);
  for (int line = 0; line < lines_of_group(columns_.size(), group); ++line, from += y_.n) {
    cpx* in = work.in.get() + at(line) * step;
    if (y_.n % 2 == 0) {
      std::copy_n(from, y_.n, in);
    } else {
      std::fill_n(in, y_.n, 0.0);
      for (int q = 0; q < y_.n; ++q) in[y_.bin[at(q)]] += from[q];
    }
    times_number(y_.n, in, number_y_.data(), work.drift_in.get() + at(line) * step);
  }
  along_y_->fft(work.in.get(), work.out.get());
  along_y_drift_->fft(work.drift_in.get(), work.drift_out.get());
}

RankSums::Column RankSums::column(int line, const Workspace& work) const {
  const std::size_t begin = at(line) * line_step(y_.n);
  return {work.out.get() + begin, work.drift_out.get() + begin, drift_y_.data()};
}

}  // namespace wpm
