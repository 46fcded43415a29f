// One inverse transform for each pair of indices, where each rank has a range of columns.
#include <algorithm>

#include "wpm/cost.h"
#include "wpm/loops.h"
#include "wpm/rank_direct.h"
#include "wpm/rank_pairs.h"
#include "wpm/rank_sums.h"
#include "wpm/stepper.h"
#include "wpm/windows.h"
#include "wpm/wisdom_of_ranks.h"

namespace wpm {
namespace {

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

// What decides for all ranks is the same number on all of them; nothing else may.
class RankFastStepper : public CpuStepper {
 public:
  RankFastStepper(const Grid& grid, const StepOptions& options)
      : grid_(grid),
        options_(options),
        columns_(window_of_rank(grid).columns()),
        axes_(grid),
        x_(grid.nx),
        y_(grid.ny),
        folds_(y_, x_, axes_.KY.data(), axes_.KX.data(), ranks::share(grid.ny).begin,
               ranks::share(grid.ny).end),
        pairs_(grid),
        transfers_(folds_, options, kTransferBytes),
        sum_(at(columns_) * at(grid.ny)),
        flux_(sum_.size()) {
    workspaces();
    plan_alike([&] {
      spectrum_ = std::make_unique<RankSpectrum>(x_, y_, folds_, workspaces_);
      sums_ = std::make_unique<RankSums>(x_, y_, workspaces_);
      return true;
    });
    exchange_ = std::make_unique<ranks::Transpose>(grid.nx, grid.ny);
  }

  void step(const Slice& from, const Slice& to) override {
    workspaces();
    spectrum_->take(from.E, *exchange_);
    pairs_.find(from, to);
    if (spectrum_->is_tame() && transforms_are_cheaper() &&
        ranks::all(transfers_.are_tame(pairs_.pairs()))) {
      sum_by_transforms(to);
      taken_ = "transforms";
      ++counts_.transforms;
    } else {
      // Made where it is needed: each rank has a whole slice in it.
      if (direct_ == nullptr) direct_ = std::make_unique<RankDirectSum>(grid_, options_);
      const bool is_known = direct_->sum(from, to, &pairs_.pairs());
      taken_ = is_known ? "NaN everywhere" : "direct sum";
      ++(is_known ? counts_.known : counts_.direct);
    }
  }

  [[nodiscard]] const char* sum_taken() const override { return taken_; }
  [[nodiscard]] SumCounts counts() const override { return counts_; }

 private:
  void workspaces() {
    while (static_cast<int>(workspaces_.size()) < threads())
      workspaces_.emplace_back(std::max(grid_.nx, grid_.ny));
  }

  // The ranks' stores may hold different numbers of transfer functions: the one with the most to do
  // holds up the others.
  [[nodiscard]] bool transforms_are_cheaper() {
    const auto count = static_cast<double>(pairs_.pairs().size());
    const int missing = ranks::most(static_cast<int>(transfers_.begin(pairs_.pairs())));
    return wpm::transforms_are_cheaper({static_cast<double>(grid_.plane()), spectrum_->kept(),
                                        count, count, static_cast<double>(missing)});
  }

  void sum_by_transforms(const Slice& to) {
    const auto count = static_cast<std::uint32_t>(pairs_.pairs().size());
    std::vector<double> flux(count);
    std::fill(sum_.begin(), sum_.end(), 0.0);
    for (std::uint32_t pair = 0; pair < count; ++pair) {
      const Transfer& transfer = transfers_.get(pairs_.pairs()[pair]);
      flux[pair] = spectrum_->flux(transfer);
      sums_->begin(*spectrum_, transfer, *exchange_);
      sums_->columns(4.0 * static_cast<double>(sum_.size()),
                     [&](int group, Workspace& work) { place(group, pair, work); });
    }
    ranks::sum(flux.data(), flux.size());
    add_to(to, flux);
  }

  // Takes the sum of a pair to its samples in eight columns.
  void place(int group, std::uint32_t pair, Workspace& work) {
    const std::span<const Run> runs = pairs_.in_group(group, pair);
    if (runs.empty()) return;
    sums_->prepare(group, *exchange_, work);
    for (const Run& run : runs) {
      const RankSums::Column column = sums_->column(run.row % kBatch, work);
      add_corrected(run.end - run.begin, column.sum + run.begin, column.correction + run.begin,
                    column.drift + 2 * run.begin,
                    sum_.data() + at(run.row) * at(grid_.ny) + at(run.begin));
    }
  }

  // The sums stand by columns, the window of the slice by rows.
  void add_to(const Slice& to, const std::vector<double>& flux) {
    turn_and_add(sum_.data(), columns_, grid_.ny, to.E);
    for (int group = 0; group < groups_of(columns_); ++group)
      for (std::uint32_t pair = 0; pair < flux.size(); ++pair)
        for (const Run& run : pairs_.in_group(group, pair))
          std::fill_n(flux_.begin() + std::ptrdiff_t{run.row} * grid_.ny + run.begin,
                      run.end - run.begin, flux[pair]);
    turn_and_add(flux_.data(), columns_, grid_.ny, to.F);
  }

  Grid grid_;
  StepOptions options_;
  int columns_;
  Axes axes_;
  Axis x_, y_;
  FoldedFrequencies folds_;
  std::vector<Workspace> workspaces_;
  RankPairs pairs_;
  TransferStore transfers_;
  std::vector<cpx> sum_;      // [own columns][ny]
  std::vector<double> flux_;  // likewise
  std::unique_ptr<RankDirectSum> direct_;
  std::unique_ptr<RankSpectrum> spectrum_;
  std::unique_ptr<RankSums> sums_;
  std::unique_ptr<ranks::Transpose> exchange_;
  const char* taken_ = "transforms";
  SumCounts counts_;
};

}  // namespace
}  // namespace wpm

std::unique_ptr<CpuStepper> make_rank_fast_stepper(const Grid& grid, const StepOptions& options) {
  const wpm::Axes axes(grid);
  if (wpm::is_regular(axes.KX.data(), axes.X.data(), grid.nx) &&
      wpm::is_regular(axes.KY.data(), axes.Y.data(), grid.ny))
    return std::make_unique<wpm::RankFastStepper>(grid, options);
  return make_rank_direct_stepper(grid, options);
}
