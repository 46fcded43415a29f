// Steps of many pairs of indices, within a tolerance.
#pragma once

#include <random>

#include "wpm/interpolation.h"
#include "wpm/plane_sums.h"

namespace wpm {

class ManyPairs {
 public:
  ManyPairs(const Grid& grid, const StepOptions& options, const Axis& x, const Axis& y,
            FoldedFrequencies folds);

  // Whether a few functions serve the pairs of the step within the tolerance, at less cost than the
  // pairs themselves. Where looking for them is dear and in vain, some steps are left unasked.
  bool serve(const Slice& from, const PairRuns& runs, const BinnedSpectrum& spectrum,
             TransferStore& transfers);
  [[nodiscard]] const std::vector<IndexPair>& functions() const { return pairs_.functions(); }

  // Adds to E and F of the slice, by the functions that serve; now and then looks at a few samples
  // how far that is from the exact sum.
  void sum(const Slice& to, const PairRuns& runs, const BinnedSpectrum& spectrum,
           TransferStore& transfers, PlaneSums& sums);

  // The largest such difference over the largest modulus of the field.
  [[nodiscard]] double error_found() const { return error_found_; }

 private:
  struct Sample {
    int j, i;
    IndexPair pair;
    cpx before;
  };
  [[nodiscard]] std::vector<IndexPair> all_functions() const;
  double cost_of(const std::vector<IndexPair>& transformed, const std::vector<IndexPair>& needed,
                 TransferStore& transfers) const;
  [[nodiscard]] std::vector<double> flux_of_pairs(const PairRuns& runs,
                                                  const BinnedSpectrum& spectrum,
                                                  TransferStore& transfers, PlaneSums& sums) const;
  void place(int group, std::size_t r, const std::vector<double>& flux, const PairRuns& runs,
             const PlaneSums::RowGroup& rows, const Slice& to) const;
  [[nodiscard]] double allowed_error() const;
  std::vector<Sample> choose_samples(const Slice& to, const PairRuns& runs);
  void compare(const std::vector<Sample>& samples, const Slice& to, const BinnedSpectrum& spectrum);

  Grid grid_;
  StepOptions options_;
  const Axis& x_;
  const Axis& y_;
  FoldedFrequencies folds_;
  Shells shells_;
  PairInterpolation pairs_;
  std::mt19937 random_{1};
  int steps_ = 0;
  int rest_ = 0, steps_to_rest_ = 0;  // steps to the next try
  double field_factor_ = 1;
  double largest_ = 0;  // modulus of the field that is stepped from, times the factor
  double error_found_ = 0;
};

}  // namespace wpm
