// The pairs of indices of a step whose slices are shared out among ranks.
#pragma once

#include "wpm/pair_runs.h"

namespace wpm {

// Those of all ranks, distinct to the bit, the same list on every rank, and where a rank's own
// samples have them: as runs along its columns.
class RankPairs {
 public:
  explicit RankPairs(const Grid& grid);

  // Finds those of a step from its windows, [ny][own columns]. For all ranks to call.
  void find(const Slice& from, const Slice& to);

  [[nodiscard]] const std::vector<IndexPair>& pairs() const { return pairs_; }
  // The runs of a pair in eight of the rank's columns: `row` is a column, samples go along y.
  [[nodiscard]] std::span<const Run> in_group(int group, std::uint32_t pair) const;

 private:
  Slice turned(const Slice& slice, std::vector<cpx>& N) const;
  void share_pairs();

  int columns_, ny_;
  PairRuns own_;
  std::vector<cpx> N_from_, N_to_;         // turned
  int from_ = -1, to_ = -1;                // stretches of the last step
  std::vector<IndexPair> pairs_;           // of all ranks
  std::vector<std::uint32_t> own_number_;  // of each of those among the rank's own
};

}  // namespace wpm
