// One axis of the grid as a discrete transform sees it.
#pragma once

#include <vector>

#include "system/system.h"

namespace wpm {

// The sum over plane waves p of a_p exp(i KX[p] X[i]) is nearly an inverse transform. With
// X[i] = (i - c) dx, c = floor(n/2), and KX[p] = m_p * 6.2831853/(n dx),
//
//   exp(i KX[p] X[i]) = exp(2 pi i i m_p/n) * exp(-2 pi i c m_p/n) * exp(i d (i - c) m_p),
//   d = (6.2831853 - 2 pi)/n:
//
// the first factor is the transform's, the second a phase of each frequency, the third a drift that
// is linear in d to better than 1e-11. Frequencies go to the transform's bins m mod n; on odd
// sizes the last frequency is 0 again and shares bin 0 with the first, and one bin stays empty.
struct Axis {
  explicit Axis(int n);

  int n;
  std::vector<int> bin;        // of frequency p
  std::vector<cpx> phase;      // of frequency p: exp(-2 pi i c m/n), its sign (-1)^p included;
                               //   exactly 1 on even sizes
  std::vector<double> number;  // of bin b: its frequency's m; 0 if it is empty
  std::vector<int> fold;       // of bin b: |m|, since transfer functions are even
  std::vector<double> drift;   // of sample i: d (i - c)
  int folds;                   // number of different |m|
};

// Whether K and X, [n] each, are what init_F and init_X make of one spacing: finite, and in the
// proportions that Axis takes for granted.
bool is_regular(const cpx* K, const double* X, int n);

}  // namespace wpm
