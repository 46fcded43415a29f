// A few pairs of indices that stand for many.
#pragma once

#include <vector>

#include "wpm/shells.h"

namespace wpm {

// What a step does to a plane wave depends smoothly on the two indices, so the transfer function of
// any pair in a range is a combination of those of a few:
//
//   T(n_i, n_t) = sum over r of weight_r(n_i, n_t) T_r.
//
// The candidates are Chebyshev nodes of the range, of which skeleton_of keeps what the spectrum at
// hand needs; the weights are the Lagrange polynomials of the nodes, combined. Absorption is a
// factor of its own. Pairs whose index does not change and pairs whose index does are two families,
// since evanescent waves pass the one and end at the other.
//
// Plane waves near the cut-off, whose kz is propagating for some indices of the range and
// evanescent for others, are not smooth there. The bound counts them in full: where it cannot be
// kept with a few functions, the pairs are left to be summed one by one.
class PairInterpolation {
 public:
  PairInterpolation(const StepOptions& options, const Shells& shells);

  // Looks for functions that serve the pairs of a step: the root of the sum of |f|^2 |error of
  // T|^2, which is the root mean square of the field's error, is to stay within allowed at every
  // pair that is looked at. False if there are none, or no fewer than pairs.
  bool prepare(const std::vector<IndexPair>& pairs, double allowed);

  // The pairs T_r to transform, and those whose flux is to be known.
  [[nodiscard]] const std::vector<IndexPair>& functions() const { return functions_; }
  [[nodiscard]] const std::vector<IndexPair>& flux_functions() const { return flux_functions_; }
  // What the last call of prepare took, in the nanoseconds that cost.h counts in.
  [[nodiscard]] double cost() const { return cost_; }
  // Of function number r: [pairs of the step].
  [[nodiscard]] const cpx* weights(std::size_t r) const { return weights_[r].data(); }
  // Of pair number c of the step: [flux_functions].
  [[nodiscard]] const double* flux_weights(std::uint32_t c) const {
    return flux_weights_.data() + c * flux_functions_.size();
  }

 private:
  // Real parts of a family's indices, and what stands for them.
  struct Family {
    bool is_changed = false;
    double low_i = 0, high_i = 0, low_t = 0, high_t = 0;
    int nodes = 0;  // in each index; 0: none
    std::vector<double> at_i, at_t;
    std::vector<IndexPair> candidates;
    std::vector<std::size_t> chosen, flux_chosen;         // candidates
    std::vector<std::vector<cpx>> weights, flux_weights;  // [candidate][chosen]
  };

  [[nodiscard]] bool is_smooth(const std::vector<IndexPair>& pairs) const;
  bool fit(Family& family, const std::vector<IndexPair>& members, double allowed);
  bool try_nodes(Family& family, int nodes, const std::vector<IndexPair>& probes, double allowed);
  void weigh(const Family& family, const IndexPair& pair, cpx* weights, double* flux) const;
  void sample(const IndexPair& pair, std::vector<cpx>& field, std::vector<cpx>& flux) const;
  [[nodiscard]] static std::vector<double> lagrange(const Family& family, const IndexPair& pair);

  StepOptions options_;
  const Shells& shells_;
  Family same_, changed_;
  std::vector<IndexPair> functions_, flux_functions_;
  std::vector<std::vector<cpx>> weights_;
  std::vector<double> flux_weights_;
  double cost_ = 0;
};

}  // namespace wpm
