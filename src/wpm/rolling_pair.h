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
  RollingPair(const IndexStack& stack, const Window& window, const cpx* E0, const double* F0);

  // Slices in order: k is the newest one or the next.
  Slice at(int k) override;
  [[nodiscard]] bool are_kept() const override { return false; }

  // Continues a run at slice k, whose field is E, as E0.
  void go_on_at(int k, const cpx* E);

  // From now on a slice begins with what another has left in E and F: for steps that replace it.
  void leave_undarkened() { is_darkened_ = false; }

 private:
  struct Buffers {
    std::vector<cpx> E;
    std::vector<double> F;
    std::size_t index = 0;  // which of the index planes is this slice's
  };

  void darken(Buffers& slice) const;
  void paint(int k);

  [[nodiscard]] Window window_of(int k) const;

  const IndexStack& stack_;
  Window window_;
  Buffers slices_[2];          // slice k stands in slices_[k % 2]
  std::vector<cpx> index_[2];  // two of them: equal neighbours share one
  int newest_ = 0;
  bool is_darkened_ = true;
};
