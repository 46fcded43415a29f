#include "wpm/skeleton.h"

#include <algorithm>
#include <cmath>

namespace wpm {
namespace {

// The product of a with the conjugate of b.
cpx inner(const std::vector<cpx>& a, const std::vector<cpx>& b) {
  double re = 0.0;
  double im = 0.0;
  for (std::size_t k = 0; k < a.size(); ++k) {
    re += a[k].real() * b[k].real() + a[k].imag() * b[k].imag();
    im += a[k].imag() * b[k].real() - a[k].real() * b[k].imag();
  }
  return {re, im};
}

}  // namespace

Skeleton skeleton_of(const Rows& rows, double allowed) {
  Skeleton skeleton;
  Rows left = rows;
  std::vector<std::vector<cpx>> parts(rows.size());  // of each row along each direction chosen
  while (skeleton.chosen.size() < rows.size()) {
    std::size_t pivot = 0;
    double most = -1.0;
    for (std::size_t row = 0; row < rows.size(); ++row) {
      const double remainder = inner(left[row], left[row]).real();
      if (remainder > most) most = remainder, pivot = row;
    }
    const double length = std::sqrt(most);
    if (!(length > allowed)) break;
    skeleton.chosen.push_back(pivot);
    std::vector<cpx> direction = left[pivot];
    for (cpx& value : direction) value /= length;
    for (std::size_t row = 0; row < rows.size(); ++row) {
      const cpx part = inner(left[row], direction);
      parts[row].push_back(part);
      for (std::size_t k = 0; k < direction.size(); ++k)
        left[row][k] -= cpx(part.real() * direction[k].real() - part.imag() * direction[k].imag(),
                            part.real() * direction[k].imag() + part.imag() * direction[k].real());
    }
  }
  // Chosen row r has parts along directions 0..r: solve from the last backwards.
  const std::size_t count = skeleton.chosen.size();
  for (std::size_t row = 0; row < rows.size(); ++row) {
    std::vector<cpx> weights = parts[row];
    for (std::size_t r = count; r-- > 0;) {
      const std::vector<cpx>& of_chosen = parts[skeleton.chosen[r]];
      weights[r] /= of_chosen[r];
      for (std::size_t s = 0; s < r; ++s) weights[s] -= weights[r] * of_chosen[s];
    }
    skeleton.weights.push_back(std::move(weights));
  }
  return skeleton;
}

}  // namespace wpm
