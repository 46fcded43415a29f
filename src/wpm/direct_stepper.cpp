// The reference's sums, one step at a time.
#include "ranks/ranks.h"
#include "wpm/axes.h"
#include "wpm/host_stepper.h"
#include "wpm/spectrum.h"
#include "wpm/superposition.h"

namespace wpm {
namespace {

class DirectStepper : public HostStepper {
 public:
  DirectStepper(const Grid& grid, const StepOptions& options)
      : grid_(grid),
        rows_(ranks::share(grid.ny)),
        options_(options),
        axes_(grid),
        spectrum_(grid.ny, grid.nx) {}

 private:
  StepResult step(const Slice& from, const Slice& to) override {
    const cpx* S = spectrum_.of(from.E);
    superpose(plane_waves(S, axes_.KX.data(), axes_.KY.data(), grid_.ny, grid_.nx), options_,
              {to.E, to.F, from.N, to.N, axes_.X.data(), axes_.Y.data() + rows_.begin, rows_.size(),
               grid_.nx});
    return {};
  }

  Grid grid_;
  ranks::Share rows_;
  StepOptions options_;
  Axes axes_;
  Spectrum spectrum_;
};

}  // namespace
}  // namespace wpm

std::unique_ptr<Stepper> make_direct_stepper(const Grid& grid, const StepOptions& options) {
  return std::make_unique<wpm::DirectStepper>(grid, options);
}
