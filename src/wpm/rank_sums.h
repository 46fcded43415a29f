// Sums over all plane waves, by transforms, where each rank has a range of columns.
#pragma once

#include "wpm/rank_spectrum.h"
#include "wpm/threads.h"

namespace wpm {

// As PlaneSums, the other way round: along x at the rank's own frequencies of y, with the drift in
// x, then exchanged for columns, and along y with the drift in y. One sum at a time.
class RankSums {
 public:
  RankSums(const Axis& x, const Axis& y, std::vector<Workspace>& workspaces);

  // Begins a sum. exchange: of [x.n][y.n], left alone until the sum is ended.
  void begin(const RankSpectrum& spectrum, const Transfer& transfer, ranks::Transpose& exchange);

  // A column of the sum before its correction: see add_corrected.
  struct Column {
    const cpx* sum;                         // [y.n]
    const std::complex<float>* correction;  // [y.n]
    const double* drift;                    // [2 y.n]
  };
  // Ends the sum in eight of the rank's own columns.
  void prepare(int group, const ranks::Transpose& exchange, Workspace& work);
  [[nodiscard]] Column column(int line, const Workspace& work) const;

  // Calls use(group, workspace) for each group of eight own columns, on several threads at once.
  template <typename Use>
  void columns(double nanoseconds, Use use) {
    share_out(groups_of(columns_.size()), nanoseconds, [&](int group, int worker) {
      use(group, workspaces_[static_cast<std::size_t>(worker)]);
    });
  }

 private:
  void transform_lines(int group, const RankSpectrum& spectrum, const Transfer& transfer,
                       cpx* exchanged, Workspace& work);

  const Axis& x_;
  const Axis& y_;
  std::vector<Workspace>& workspaces_;
  ranks::Share columns_;
  std::vector<float> number_x_, number_y_;  // [2n]: of each bin, twice
  std::vector<double> drift_x_, drift_y_;   // [2n]: -drift, drift of each sample
  std::unique_ptr<fftwpp::fft1d_many> along_x_, along_y_;
  std::unique_ptr<fftwpp::fft1f_many> along_x_drift_, along_y_drift_;
};

}  // namespace wpm
