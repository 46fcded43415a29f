// Transfer functions of index pairs: what a step does to plane waves of amplitude 1.
#pragma once

#include <list>
#include <span>
#include <unordered_map>
#include <vector>

#include "ranks/ranks.h"
#include "wpm/axis.h"
#include "wpm/index_pairs.h"
#include "wpm/modes.h"

namespace wpm {

// Memory for transfer functions that recur: over 600 pairs at 256 x 256.
constexpr std::size_t kTransferBytes = std::size_t{256} << 20U;

// One pair's, [own fold of kx][fold of ky]: they depend on the frequencies' squares alone, so a
// value serves both signs of both.
struct Transfer {
  std::vector<cpx> field;      // factor of the field, longitudinal phase included; 0 where dropped
  std::vector<double> flux;    // factor of |f|^2
  std::vector<char> is_blank;  // [own fold of kx]: the factors of the field are all 0
  bool is_tame = true;         // finite and far from overflow
};

// The frequencies of folds, as the plane waves have them: those in folds of kx, all of ky.
struct FoldedFrequencies {
  FoldedFrequencies(const Axis& x, const Axis& y, const cpx* KX, const cpx* KY,
                    const ranks::Share& folds);
  FoldedFrequencies(const Axis& x, const Axis& y, const cpx* KX, const cpx* KY)
      : FoldedFrequencies(x, y, KX, KY, {0, x.folds}) {}
  std::vector<double> kx, ky;
  int first;  // the fold of the first kx
};

// Worked out by all threads. Cost: a mode for each four plane waves. Memory that transfer has is
// used again.
void find_transfer(const IndexPair& pair, const FoldedFrequencies& folds,
                   const StepOptions& options, Transfer& transfer);

// Keeps transfer functions from step to step, within a bound of memory. What a step needs is never
// driven out by the same step: where the bound is too small for all of its pairs, some stay and the
// others are worked out again each time.
class TransferStore {
 public:
  TransferStore(FoldedFrequencies folds, const StepOptions& options, std::size_t bytes);

  // Says which pairs the next calls of get will ask for; returns how many of them are to be made.
  std::size_t begin(const std::vector<IndexPair>& pairs);
  // The pair's; valid until the next call of this or of begin.
  const Transfer& get(const IndexPair& pair);
  // Those of several; valid likewise.
  std::span<const Transfer* const> get(std::span<const IndexPair> pairs);

  // Whether all are tame; remembered where the transfer functions themselves are not.
  bool are_tame(const std::vector<IndexPair>& pairs);

  [[nodiscard]] int made() const { return made_; }  // since the store was

 private:
  struct Entry {
    IndexPair pair;
    Transfer transfer;
    bool is_needed = false;
  };
  bool is_tame(const IndexPair& pair);
  // passing: those of the call that got no room so far, each with a place of its own.
  const Transfer& find(const IndexPair& pair, std::size_t& passing);

  FoldedFrequencies folds_;
  StepOptions options_;
  std::size_t capacity_;      // entries
  std::list<Entry> entries_;  // those of the latest step first
  std::unordered_map<IndexPair, std::list<Entry>::iterator, HashBits, SameBits> place_;
  std::list<Transfer> passing_;  // those that there was no room for
  std::vector<const Transfer*> together_;
  std::unordered_map<IndexPair, bool, HashBits, SameBits> is_tame_;
  int made_ = 0;
};

}  // namespace wpm
