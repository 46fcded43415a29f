// Transfer functions of index pairs: what a step does to plane waves of amplitude 1.
#pragma once

#include <list>
#include <memory>
#include <vector>

#include "wpm/axis.h"
#include "wpm/modes.h"

// One pair's, [ky fold][kx bin]: they depend on the frequencies' squares alone, so a row serves
// both signs of ky, and the half of it that mirrors the other is copied.
struct Transfer {
  std::vector<cpx> field;    // factor of the field, longitudinal phase included; 0 where dropped
  std::vector<double> flux;  // factor of |f|^2
  bool is_tame = true;       // finite and far from overflow
};

// The frequencies of each fold, as the plane waves have them, and the fold of each bin in x.
struct FoldedFrequencies {
  FoldedFrequencies(const Axis& x, const Axis& y, const cpx* KX, const cpx* KY);
  std::vector<double> kx, ky;
  std::vector<int> fold_of_bin;
};

// Worked out by all OpenMP threads. Cost: a mode for each two folds.
Transfer transfer_of(const IndexPair& pair, const FoldedFrequencies& folds,
                     const StepOptions& options);

// Keeps transfer functions from step to step, the ones used last, within a bound of memory.
class TransferStore {
 public:
  TransferStore(FoldedFrequencies folds, const StepOptions& options, std::size_t bytes);

  // The pair's, kept or made; valid until the next call.
  const Transfer& get(const IndexPair& pair);
  [[nodiscard]] bool has(const IndexPair& pair) const;

 private:
  struct Entry {
    IndexPair pair;
    Transfer transfer;
  };

  FoldedFrequencies folds_;
  StepOptions options_;
  std::size_t capacity_;      // entries, at least one
  std::list<Entry> entries_;  // the last used first
};
