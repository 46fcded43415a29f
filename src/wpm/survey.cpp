#include "wpm/survey.h"

#include <fftw3.h>

#include <algorithm>
#include <memory>
#include <unordered_set>

#include "wpm/cost.h"
#include "wpm/index_pairs.h"

namespace {

constexpr int kLooks = 100;
constexpr double kSecond = 1e9;  // ns

// Looks at steps, in order, and adds up what they and those like them cost.
class Surveyor {
 public:
  Surveyor(const IndexStack& stack, double entry_waves)
      : stack_(stack),
        grid_(stack.grid()),
        samples_(static_cast<double>(grid_.plane())),
        kept_(entry_waves),
        before_(grid_.plane()),
        behind_(grid_.plane()) {
    found_.most_waves = entry_waves;
  }

  // Step to slice k, of which there are so many alike: the same pairs each time, or, where the
  // index changes, other pairs of the same number.
  void look_at(int k, double steps, bool are_same) {
    stack_.paint(before_.data(), Window::slice(grid_, k - 1));
    stack_.paint(behind_.data(), Window::slice(grid_, k));
    find_index_pairs(before_.data(), behind_.data(), grid_.plane(), pairs_);
    const auto count = static_cast<double>(pairs_.pairs.size());
    found_.most_pairs = std::max(found_.most_pairs, pairs_.pairs.size());
    pair_steps_ += steps * count;
    steps_ += steps;

    const auto is_new = [this](const IndexPair& pair) { return !known_.contains(pair); };
    const auto missing =
        static_cast<double>(std::count_if(pairs_.pairs.begin(), pairs_.pairs.end(), is_new));
    const double making = are_same ? 1 : steps;  // steps that make what is missing
    const wpm::StepWork first = {samples_, kept_, count, count, missing};
    const wpm::StepWork later = {samples_, kept_, count, count, 0};
    found_.direct_seconds += steps * wpm::cost_of_direct_sum(later) / kSecond;
    if (wpm::transforms_are_cheaper(first)) {
      known_.insert(pairs_.pairs.begin(), pairs_.pairs.end());
      found_.transfers += making * missing;
      found_.transformed_steps += steps;
      found_.fast_seconds += (making * wpm::cost_by_transforms(first) +
                              (steps - making) * wpm::cost_by_transforms(later)) /
                             kSecond;
    } else {
      found_.fast_seconds += steps * wpm::cost_of_direct_sum(later) / kSecond;
    }
    if (count > 1) kept_ = samples_;
    found_.most_waves = std::max(found_.most_waves, kept_);
  }

  IndexSurvey found() {
    if (steps_ > 0) found_.mean_pairs = pair_steps_ / steps_;
    return found_;
  }

 private:
  const IndexStack& stack_;
  const Grid& grid_;
  double samples_;
  double kept_;  // plane waves
  std::vector<cpx> before_, behind_;
  IndexPairs pairs_;
  std::unordered_set<IndexPair, HashBits, SameBits> known_;
  double pair_steps_ = 0, steps_ = 0;
  IndexSurvey found_;
};

}  // namespace

IndexSurvey survey(const IndexStack& stack, double entry_waves) {
  const Grid& grid = stack.grid();
  if (grid.voxels() == 0) return {};  // painters count a size of 0 as 1
  std::vector<int> changing;          // slices that differ from the one before
  for (int k = 1; k < grid.nz; ++k)
    if (stack.stretch(k) != stack.stretch(k - 1)) changing.push_back(k);
  const auto changes = static_cast<int>(changing.size());

  Surveyor surveyor(stack, entry_waves);
  const int first = changes > 0 ? changing.front() : grid.nz;
  if (first > 1) surveyor.look_at(1, first - 1, true);
  const int stride = std::max(1, changes / kLooks);
  for (int i = 0; i < changes; i += stride) {
    const int k = changing[static_cast<std::size_t>(i)];
    const int next = i + 1 < changes ? changing[static_cast<std::size_t>(i) + 1] : grid.nz;
    const double alike = std::min(stride, changes - i);
    surveyor.look_at(k, alike, false);
    if (next > k + 1) surveyor.look_at(k + 1, alike * (next - k - 1), true);
  }
  IndexSurvey found = surveyor.found();
  found.changes = changes;
  return found;
}

std::size_t count_plane_waves(const cpx* E, const Grid& grid) {
  const std::unique_ptr<cpx[], decltype(&fftw_free)> S(
      static_cast<cpx*>(fftw_malloc(grid.plane() * sizeof(cpx))), fftw_free);
  if (S == nullptr || grid.plane() == 0) return 0;
  auto* values = reinterpret_cast<fftw_complex*>(S.get());
  const fftw_plan plan =
      fftw_plan_dft_2d(grid.ny, grid.nx, values, values, FFTW_FORWARD, FFTW_ESTIMATE);
  std::copy_n(E, grid.plane(), S.get());
  fftw_execute(plan);
  fftw_destroy_plan(plan);
  return grid.plane() -
         static_cast<std::size_t>(std::count_if(S.get(), S.get() + grid.plane(),
                                                [](const cpx& s) { return is_weak(s); }));
}

double most_direct_seconds(const Grid& grid) {
  const auto samples = static_cast<double>(grid.plane());
  return std::max(0, grid.nz - 1) * wpm::cost_of_direct_sum({samples, samples, 0, 0, 0}) / kSecond;
}
