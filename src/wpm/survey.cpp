#include "wpm/survey.h"

#include <algorithm>
#include <cmath>

#include "wpm/index_pairs.h"

namespace {

constexpr int kLooks = 100;
constexpr double kDirectTerm = 25e-9;        // s, a plane wave at a sample
constexpr double kTransformedSample = 3e-9;  // s, a sample of a pair's sum, a level of transform

double steps(const Grid& grid) {
  return std::max(0, grid.nz - 1);
}

}  // namespace

IndexSurvey survey(const IndexStack& stack) {
  const Grid& grid = stack.grid();
  IndexSurvey found;
  if (grid.voxels() == 0) return found;  // painters count a size of 0 as 1
  std::vector<int> changing;             // slices that differ from the one before
  for (int k = 1; k < grid.nz; ++k)
    if (stack.stretch(k) != stack.stretch(k - 1)) changing.push_back(k);
  found.changes = static_cast<int>(changing.size());

  std::vector<cpx> before(grid.plane());
  std::vector<cpx> behind(grid.plane());
  IndexPairs pairs;
  const auto look_at = [&](int k) {
    stack.paint(before.data(), Window::slice(grid, k - 1));
    stack.paint(behind.data(), Window::slice(grid, k));
    find_index_pairs(before.data(), behind.data(), grid.plane(), pairs);
    found.most_pairs = std::max(found.most_pairs, pairs.pairs.size());
    return static_cast<double>(pairs.pairs.size());
  };
  const int stride = std::max(1, found.changes / kLooks);
  double sum_at_changes = 0;
  double sum_between = 0;  // the steps of the stretch that begins at a change
  int looks = 0;
  int steps_between = 0;
  for (int i = 0; i < found.changes; i += stride, ++looks) {
    const int k = changing[static_cast<std::size_t>(i)];
    sum_at_changes += look_at(k);
    const int next = i + 1 < found.changes ? changing[static_cast<std::size_t>(i) + 1] : grid.nz;
    if (next == k + 1) continue;
    sum_between += (next - k - 1) * look_at(k + 1);
    steps_between += next - k - 1;
  }
  const int first = found.changes > 0 ? changing.front() : grid.nz;
  if (first > 1) {
    sum_between += (first - 1) * look_at(1);
    steps_between += first - 1;
  }
  const int counted = looks + steps_between;
  if (counted > 0) found.mean_pairs = (sum_at_changes + sum_between) / counted;
  return found;
}

double direct_seconds(const Grid& grid, int threads) {
  const auto samples = static_cast<double>(grid.plane());
  return steps(grid) * samples * samples * kDirectTerm / threads;
}

double fast_seconds(const Grid& grid, double pairs, int threads) {
  const auto samples = static_cast<double>(grid.plane());
  return steps(grid) * pairs * samples * (1.0 + std::log2(std::max(2.0, samples))) *
         kTransformedSample / threads;
}
