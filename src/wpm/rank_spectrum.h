// The plane waves of a slice whose columns are shared out among ranks.
#pragma once

#include <span>

#include "ranks/ranks.h"
#include "wpm/axis.h"
#include "wpm/batches.h"
#include "wpm/transfer.h"

namespace wpm {

// A rank's own frequencies of y, all those of x: amplitudes as the inverse transform takes them,
// weak plane waves dropped. The ranks' columns are transformed along y, exchanged for rows of the
// frequencies of y, and these are transformed along x.
//
// Frequencies of y keep their places q from 0 to y.n - 1, also on odd sizes, where two of them
// share a bin: they meet when they are brought to their bins, behind the way back.
class RankSpectrum {
 public:
  // folds: of the rank's own frequencies of y, first, and those of x.
  RankSpectrum(const Axis& x, const Axis& y, const FoldedFrequencies& folds,
               std::vector<Workspace>& workspaces);

  // From a window E of the slice, [y.n][own columns]. exchange: of [x.n][y.n].
  void take(const cpx* E, ranks::Transpose& exchange);

  // Of all ranks:
  [[nodiscard]] double kept() const { return kept_; }      // plane waves
  [[nodiscard]] bool is_tame() const { return is_tame_; }  // finite and far from overflow

  // Of the rank's own frequency line, from 0 on: the amplitudes, [x.n bins], and its place among
  // the folds.
  [[nodiscard]] const cpx* line(int line) const { return f_.get() + at(line) * at(x_.n); }
  [[nodiscard]] bool is_empty(int line) const { return kept_in_[at(line)] == 0; }
  [[nodiscard]] int fold(int line) const { return fold_of_[at(line)]; }
  [[nodiscard]] int lines() const { return own_.size(); }

  // What a sample's flux has from the rank's own plane waves.
  [[nodiscard]] double flux(const Transfer& transfer) const;

 private:
  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  void transform_columns(int group, const cpx* E, cpx* out, Workspace& work) const;
  void transform_lines(int group, const cpx* S, Workspace& work);
  void bin(int line, const cpx* S);
  void find_power();

  const Axis& x_;
  const Axis& y_;
  std::vector<Workspace>& workspaces_;
  ranks::Share columns_, own_;
  bool is_even_;
  std::vector<int> fold_of_;           // [own frequencies]
  AlignedArray<cpx> f_;                // [own frequencies][x.n bins]
  std::vector<double> power_of_line_;  // where plane waves share a bin
  std::vector<double> power_;          // [folds of own frequencies][x.n]
  std::vector<std::size_t> kept_in_;   // [own frequencies]
  std::vector<char> is_tame_in_;
  double kept_ = 0;
  bool is_tame_ = true;
  std::unique_ptr<fftwpp::fft1d_many> along_x_, along_y_;
};

}  // namespace wpm
