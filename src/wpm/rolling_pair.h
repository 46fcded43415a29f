// Slices of a stream: the two that a step needs, and nothing else.
#pragma once

#include <vector>

#include "system/index_stack.h"
#include "wpm/slice.h"

class RollingPair : public Slices {
 public:
  // E0, F0: the incident slice, [ny][nx], copied. The stack must outlive the pair.
  RollingPair(const IndexStack& stack, const cpx* E0, const double* F0);
  // Of the rows of a window alone: all slices are [its rows][nx].
  RollingPair(const IndexStack& stack, const Window& window, const cpx* E0, const double* F0,
              SliceDevice* device = nullptr);

  [[nodiscard]] bool are_kept() const override { return false; }
  [[nodiscard]] std::size_t samples() const override { return index_[0].size(); }

  // Begins at slice k instead, whose field is E, as E0; before the first at().
  void begin_at(int k, const cpx* E);

 private:
  struct Buffers {
    std::vector<cpx> E;
    std::vector<double> F;
    std::size_t index = 0;  // which of the index planes is this slice's
  };

  Slice slice(int k, bool is_new) override;
  void clear(Buffers& slice) const;
  void paint(int k);

  [[nodiscard]] Window window_of(int k) const;

  const IndexStack& stack_;
  Window window_;
  Buffers slices_[2];          // slice k is in slices_[k % 2]
  std::vector<cpx> index_[2];  // two of them: equal neighbours share one
  int first_ = 0;
};
