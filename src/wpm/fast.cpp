// The reference's sums, one inverse transform for each pair of indices.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <optional>

#include "ranks/ranks.h"
#include "wpm/axes.h"
#include "wpm/cost.h"
#include "wpm/host_stepper.h"
#include "wpm/loops.h"
#include "wpm/many_pairs.h"
#include "wpm/pace.h"
#include "wpm/pair_runs.h"
#include "wpm/plane_sums.h"
#include "wpm/spectrum.h"
#include "wpm/superposition.h"
#include "wpm/threads.h"

namespace wpm {
namespace {

class FastStepper : public HostStepper {
 public:
  FastStepper(const Grid& grid, const StepOptions& options)
      : grid_(grid),
        rows_(ranks::share(grid.ny)),
        options_(options),
        axes_(grid),
        x_(grid.nx),
        y_(grid.ny),
        spectrum_(x_, y_, workspaces(std::max(grid.nx, grid.ny))),
        runs_(grid),
        transfers_(FoldedFrequencies(x_, y_, axes_.KX.data(), axes_.KY.data(), spectrum_.folds()),
                   options, kTransferBytes),
        sums_(x_, y_, workspaces_) {
    if (options.tolerance > 0.0)
      many_ = std::make_unique<ManyPairs>(
          grid, options, x_, y_, FoldedFrequencies(x_, y_, axes_.KX.data(), axes_.KY.data()));
  }

 private:
  StepResult step(const Slice& from, const Slice& to) override {
    const auto begin = std::chrono::steady_clock::now();
    workspaces(std::max(grid_.nx, grid_.ny));
    runs_.find(from, to);
    // Steps that work out transfer functions share out other things than those that have them.
    const auto pairs = static_cast<double>(runs_.pairs().size());
    const auto missing = static_cast<double>(transfers_.begin(runs_.pairs()));
    Pace& pace = missing > 0 ? pace_of_new_ : pace_;
    pace.next(1 + pairs + 2 * missing);
    const ThreadLimit limit(pace.threads());
    const StepResult result = sum(from, to);
    pace.took(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    return result;
  }

  StepResult sum(const Slice& from, const Slice& to) {
    spectrum_.take(from.E);
    if (!spectrum_.is_tame()) return {.sum = sum_directly(from, to)};
    if (many_ != nullptr && many_->serve(from, runs_, spectrum_, transfers_) &&
        transforms_are_cheaper(many_->functions())) {
      many_->sum(to, runs_, spectrum_, transfers_, sums_);
      return {.sum = Sum::kInterpolated, .error = many_->error_found()};
    }
    if (transforms_are_cheaper(runs_.pairs()) && ranks::all(transfers_.are_tame(runs_.pairs()))) {
      // Of the rank's own rows. The flux has the bits of F added up sample by sample. Sums of tame
      // plane waves are finite.
      const double flux = sum_by_transforms(to);
      const bool is_dark = std::all_of(to.E, to.E + rows_.size() * std::ptrdiff_t{grid_.nx},
                                       [](const cpx& e) { return e == 0.0; });
      return {.sum = Sum::kTransforms,
              .flux = flux,
              .state = is_dark ? FieldState::kDark : FieldState::kLight};
    }
    return {.sum = sum_directly(from, to)};
  }

  // One for each thread that there is now.
  std::vector<Workspace>& workspaces(int longest) {
    while (static_cast<int>(workspaces_.size()) < threads()) workspaces_.emplace_back(longest);
    return workspaces_;
  }

  // pairs: those to transform; the direct sum has those of the step. Ranks may keep different
  // numbers of transfer functions: the one that must make most decides.
  [[nodiscard]] bool transforms_are_cheaper(const std::vector<IndexPair>& pairs) {
    return wpm::transforms_are_cheaper(
        {static_cast<double>(grid_.plane()), static_cast<double>(spectrum_.kept()),
         static_cast<double>(runs_.pairs().size()), static_cast<double>(pairs.size()),
         static_cast<double>(ranks::most(static_cast<int>(transfers_.begin(pairs))))});
  }

  // The sum of the flux.
  double sum_by_transforms(const Slice& to) {
    const auto pairs = static_cast<std::uint32_t>(runs_.pairs().size());
    const auto batch = static_cast<std::uint32_t>(sums_.batch());
    flux_of_pairs_.resize(pairs);
    for (std::uint32_t first = 0; first < pairs; first += batch) {
      const std::uint32_t end = std::min(pairs, first + batch);
      sums_.columns(spectrum_, transfers_.get({runs_.pairs().data() + first, end - first}),
                    flux_of_pairs_.data() + first);
      sums_.rows(
          4.0 * (end - first) * rows_.size() * grid_.nx, [&](int group, PlaneSums::RowGroup rows) {
            for (std::uint32_t pair = first; pair < end; ++pair)
              place(group, pair, static_cast<int>(pair - first), flux_of_pairs_[pair], rows, to);
          });
    }
    return runs_.sum_of(flux_of_pairs_);
  }

  // Adds the sum of a pair to its samples in eight rows.
  void place(int group, std::uint32_t pair, int plane, double flux, PlaneSums::RowGroup& rows,
             const Slice& to) const {
    const std::span<const Run> runs = runs_.in_group(group, pair);
    if (runs.empty()) return;
    rows.prepare(plane);
    for (const Run& run : runs) {
      const PlaneSums::Row row = rows.row(run.row % kBatch);
      const std::size_t first =
          static_cast<std::size_t>(run.row) * static_cast<std::size_t>(grid_.nx) +
          static_cast<std::size_t>(run.begin);
      add_corrected(run.end - run.begin, row.sum + run.begin, row.correction + run.begin,
                    row.drift + 2 * run.begin, to.E + first);
      for (int i = 0; i < run.end - run.begin; ++i)
        to.F[first + static_cast<std::size_t>(i)] += flux;
    }
  }

  Sum sum_directly(const Slice& from, const Slice& to) {
    if (forward_ == nullptr) forward_ = std::make_unique<Spectrum>(grid_.ny, grid_.nx);
    std::vector<PlaneWave> waves =
        plane_waves(forward_->of(from.E), axes_.KX.data(), axes_.KY.data(), grid_.ny, grid_.nx);
    const bool is_known = keep_what_decides(waves, grid_.plane(), runs_.pairs(), options_);
    superpose(waves, options_,
              {to.E, to.F, from.N, to.N, axes_.X.data(), axes_.Y.data() + rows_.begin, rows_.size(),
               grid_.nx});
    return is_known ? Sum::kKnown : Sum::kDirect;
  }

  Grid grid_;
  ranks::Share rows_;  // the rank's own; all its slices are these rows
  StepOptions options_;
  Axes axes_;
  Axis x_, y_;
  std::vector<Workspace> workspaces_;
  BinnedSpectrum spectrum_;
  PairRuns runs_;
  TransferStore transfers_;
  PlaneSums sums_;
  std::unique_ptr<ManyPairs> many_;    // where a tolerance allows for it
  std::unique_ptr<Spectrum> forward_;  // of the direct sum
  Pace pace_{threads()}, pace_of_new_{threads()};
  std::vector<double> flux_of_pairs_;  // of the last step
};

}  // namespace
}  // namespace wpm

std::unique_ptr<Stepper> make_fast_stepper(const Grid& grid, const StepOptions& options) {
  const wpm::Axes axes(grid);
  if (wpm::is_regular(axes.KX.data(), axes.X.data(), grid.nx) &&
      wpm::is_regular(axes.KY.data(), axes.Y.data(), grid.ny))
    return std::make_unique<wpm::FastStepper>(grid, options);
  return make_direct_stepper(grid, options);
}
