// Sums over all plane waves at all samples of a plane, by transforms.
#pragma once

#include <span>

#include "wpm/binned_spectrum.h"
#include "wpm/pair_runs.h"
#include "wpm/threads.h"
#include "wpm/transfer.h"

namespace wpm {

// Inverse transforms of a spectrum times transfer functions, corrected to first order for the drift
// of the axes: columns first, each with the drift in y, then rows with the drift in x. The
// corrections are below 1e-6 of the sum, so single precision keeps them to 1e-13. A transform is
// two passes over the plane, eight lines at a time, by all threads; those of several sums go
// together, so that threads wait for each other less often. A rank does the columns of its own bins
// and its own rows; between them the ranks exchange the plane.
//
//   sums.columns(spectrum, {&transfer_a, &transfer_b}, flux);
//   sums.rows(group by group: what to do with each sum)
class PlaneSums {
 public:
  PlaneSums(const Axis& x, const Axis& y, std::vector<Workspace>& workspaces);

  // How many sums may be begun before rows() ends them.
  [[nodiscard]] int batch() const { return batch_; }

  // The flux of a sample. This and columns are for all ranks to call.
  double flux(const BinnedSpectrum& spectrum, const Transfer& transfer);
  // Begins the sums of a batch. flux, if it is given, takes the flux of a sample in each.
  void columns(const BinnedSpectrum& spectrum, std::span<const Transfer* const> transfers,
               double* flux = nullptr);

  // A row of a sum, before its correction: see add_corrected.
  struct Row {
    const cpx* sum;                         // [x.n]
    const std::complex<float>* correction;  // [x.n]
    const double* drift;                    // [2 x.n]
  };
  // Row line of sum number plane, in a group of the rank's own rows; inside of rows() alone, after
  // prepare.
  class RowGroup {
   public:
    void prepare(int plane);
    [[nodiscard]] Row row(int line) const;
    // Room for [x.n] values of the caller's beside each row, until the next prepare.
    [[nodiscard]] cpx* room(int line) const;

   private:
    friend class PlaneSums;
    RowGroup(PlaneSums& sums, int group, Workspace& work)
        : sums_(sums), group_(group), work_(work) {}
    PlaneSums& sums_;
    int group_;
    Workspace& work_;
  };
  // Calls use(group, rows) for each group of eight rows, on several threads at once.
  template <typename Use>
  void rows(double nanoseconds, Use use) {
    share_out(groups_of(ranks::share(y_.n).size()), nanoseconds, [&](int group, int worker) {
      use(group, RowGroup(*this, group, workspaces_[static_cast<std::size_t>(worker)]));
    });
  }

 private:
  struct Plane {
    TurningPlane values;
    std::vector<char> is_live;          // [own column group]; zeros elsewhere
    std::vector<double> flux_of_folds;  // [own folds of x]
  };
  [[nodiscard]] double flux_of_fold(int fold, const BinnedSpectrum& spectrum,
                                    const Transfer& transfer) const;
  void transform_columns(int group, const BinnedSpectrum& spectrum, const Transfer& transfer,
                         Plane& plane, Workspace& work);

  const Axis& x_;
  const Axis& y_;
  std::vector<Workspace>& workspaces_;
  std::vector<float> number_x_, number_y_;  // [2n]: of each bin, twice
  std::vector<double> drift_x_, drift_y_;   // [2n]: -drift, drift of each sample
  int batch_;
  std::vector<Plane> planes_;  // as many as were wanted
  std::unique_ptr<fftwpp::fft1d_many> column_, row_;
  std::unique_ptr<fftwpp::fft1f_many> column_drift_, row_drift_;
};

}  // namespace wpm
