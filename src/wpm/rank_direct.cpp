#include "wpm/rank_direct.h"

#include "wpm/stepper.h"
#include "wpm/windows.h"
#include "wpm/wisdom_of_ranks.h"

namespace wpm {

RankDirectSum::RankDirectSum(const Grid& grid, const StepOptions& options)
    : grid_(grid),
      window_(window_of_rank(grid)),
      options_(options),
      axes_(grid),
      spectrum_(grid.ny, grid.nx) {}

bool RankDirectSum::sum(const Slice& from, const Slice& to, const std::vector<IndexPair>* pairs) {
  std::vector<PlaneWave> waves;
  {
    std::vector<cpx> whole(grid_.plane());
    gather_everywhere(grid_, from.E, whole.data());
    waves = plane_waves(spectrum_.of(whole.data()), axes_.KX.data(), axes_.KY.data(), grid_.ny,
                        grid_.nx);
  }
  const bool is_known =
      pairs != nullptr && keep_what_decides(waves, grid_.plane(), *pairs, options_);
  if (window_.columns() > 0)
    superpose(waves, options_,
              {to.E, to.F, from.N, to.N, axes_.X.data() + window_.x_begin, axes_.Y.data(), grid_.ny,
               window_.columns()});
  return is_known;
}

namespace {

class RankDirectStepper : public CpuStepper {
 public:
  RankDirectStepper(const Grid& grid, const StepOptions& options)
      : direct_(plan_alike([&] { return std::make_unique<RankDirectSum>(grid, options); })) {}

  void step(const Slice& from, const Slice& to) override {
    direct_->sum(from, to, nullptr);
    ++counts_.direct;
  }

  [[nodiscard]] const char* sum_taken() const override { return "direct sum"; }
  [[nodiscard]] SumCounts counts() const override { return counts_; }

 private:
  std::unique_ptr<RankDirectSum> direct_;
  SumCounts counts_;
};

}  // namespace
}  // namespace wpm

std::unique_ptr<CpuStepper> make_rank_direct_stepper(const Grid& grid, const StepOptions& options) {
  return std::make_unique<wpm::RankDirectStepper>(grid, options);
}
