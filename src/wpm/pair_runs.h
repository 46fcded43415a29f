// Where the pairs of indices of a step lie.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "wpm/index_pairs.h"
#include "wpm/slice.h"

namespace wpm {

// Neighbouring samples of a row that have the same pair.
struct Run {
  std::uint32_t pair;  // its place in pairs
  int row;
  int begin, end;  // samples
};

// Where the index of a slice changes along its rows.
struct IndexRuns {
  struct Stretch {
    int end;  // begins where the one before it ends
    cpx n;
  };
  int segment = -1;                        // the slice's number; -1: not known
  std::vector<std::vector<Stretch>> rows;  // [ny]

  void find(const Slice& slice, int ny, int nx);
};

// The pairs of a step, distinct to the bit in order of first appearance, the same list on all
// ranks; and the samples of the rank's own rows as runs of pairs.
class PairRuns {
 public:
  explicit PairRuns(const Grid& grid);

  // Finds those of a step. Of a stretch of slices that are alike the first is looked at; false if
  // the step is such a one. For all ranks to call.
  bool find(const Slice& from, const Slice& to);

  [[nodiscard]] const std::vector<IndexPair>& pairs() const { return pairs_; }
  // The runs in eight rows: all of them, by pair, and those of a pair.
  [[nodiscard]] std::span<const Run> in_group(int group) const;
  [[nodiscard]] std::span<const Run> in_group(int group, std::uint32_t pair) const;
  // The place in pairs of each sample, [own rows][nx].
  void places(std::uint32_t* of_samples) const;
  // The sum over the rank's own samples, row by row, of a number that each pair has; added one by
  // one.
  [[nodiscard]] double sum_of(std::span<const double> number_of_pair) const;

 private:
  std::uint32_t place_of(const IndexPair& pair);
  void share_pairs();

  int nx_, ny_;  // ny_: the rank's own rows

  IndexRuns from_, to_;
  std::vector<IndexPair> pairs_;
  PairTable places_;
  std::vector<Run> runs_;  // by group, then by pair
  std::vector<std::size_t> group_begin_;
  struct Alike {
    std::uint32_t pair;
    std::uint64_t samples;
  };
  std::vector<Alike> in_order_;  // of all rows
};

}  // namespace wpm
