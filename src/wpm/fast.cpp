// The same sums as the reference propagator's, one inverse transform for each pair of indices.
#include <omp.h>

#include <algorithm>
#include <cmath>

#include "wpm/index_pairs.h"
#include "wpm/plane_sums.h"
#include "wpm/progress.h"
#include "wpm/spectrum.h"
#include "wpm/superposition.h"
#include "wpm/wpm.h"

namespace {

// Memory for transfer functions that recur: over 300 pairs at 256 x 256.
constexpr std::size_t kTransferBytes = std::size_t{256} << 20U;

// Nanoseconds, measured; only their proportions matter, in the choice of the cheaper sum.
constexpr double kDirectTerm = 22.0;  // a plane wave at a sample
constexpr double kMode = 120.0;       // a plane wave at a pair
constexpr double kTransformedSample =
    3.0;  // a sample of one pair's sum, per level of the transform

class FastPropagator {
 public:
  FastPropagator(const cpx* KX, const cpx* KY, int ny, int nx, const StepOptions& options)
      : KX_(KX),
        KY_(KY),
        options_(options),
        x_(nx),
        y_(ny),
        spectrum_(x_, y_),
        transfers_(FoldedFrequencies(x_, y_, KX, KY), options, kTransferBytes),
        sums_(x_, y_) {}

  // Builds the slice behind the one whose raw transform is S.
  void step(const cpx* S, const SliceStep& slice) {
    spectrum_.take(S);
    const std::size_t samples =
        static_cast<std::size_t>(slice.nx) * static_cast<std::size_t>(slice.ny);
    find_index_pairs(slice.N_i, slice.N_t, samples, pairs_);
    if (transforms_are_cheaper(samples) && sum_by_transforms(slice, samples)) return;
    superpose(plane_waves(S, KX_, KY_, slice.ny, slice.nx), options_, slice);
  }

 private:
  [[nodiscard]] bool transforms_are_cheaper(std::size_t samples) const {
    const auto count = static_cast<double>(pairs_.pairs.size());
    const auto news = static_cast<double>(
        std::count_if(pairs_.pairs.begin(), pairs_.pairs.end(),
                      [&](const IndexPair& pair) { return !transfers_.has(pair); }));
    const auto kept = static_cast<double>(spectrum_.kept());
    const auto size = static_cast<double>(samples);
    const double direct = kept * (size * kDirectTerm + count * kMode);
    const double transformed =
        count * size * (1.0 + std::log2(size)) * kTransformedSample + news * size / 4 * kMode;
    return transformed <= direct;
  }

  // False, with nothing added, where infinities, NaN or enormous values are about: those are the
  // direct sum's business.
  bool sum_by_transforms(const SliceStep& slice, std::size_t samples) {
    if (!spectrum_.is_tame()) return false;
    flux_.clear();
    sums_.begin(pairs_.which.data());
    for (std::uint32_t pair = 0; pair < pairs_.pairs.size(); ++pair) {
      const Transfer& transfer = transfers_.get(pairs_.pairs[pair]);
      if (!transfer.is_tame) return false;
      flux_.push_back(sums_.add(spectrum_, transfer, pair));
    }
    sums_.finish(slice.E);
#pragma omp parallel for schedule(static)
    for (std::size_t s = 0; s < samples; ++s) slice.F[s] += flux_[pairs_.which[s]];
    return true;
  }

  const cpx* KX_;
  const cpx* KY_;
  StepOptions options_;
  Axis x_, y_;
  BinnedSpectrum spectrum_;
  TransferStore transfers_;
  PlaneSums sums_;
  IndexPairs pairs_;          // of the step
  std::vector<double> flux_;  // of a sample, for each pair
};

}  // namespace

void zerith_fast_3D(cpx* E, double* F, const cpx* N, const cpx* KX, const double* X, const cpx* KY,
                    const double* Y, double k0, double dz, double dy, double dx, int nz, int ny,
                    int nx, bool do_evanescent_modes, bool is_magnetic_field, polarization pol) {
  if (!is_regular(KX, X, nx) || !is_regular(KY, Y, ny)) {
    zerith_3D(E, F, N, KX, X, KY, Y, k0, dz, dy, dx, nz, ny, nx, do_evanescent_modes,
              is_magnetic_field, pol);
    return;
  }
  const std::size_t plane = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
  Spectrum forward(ny, nx, omp_get_max_threads());
  FastPropagator propagator(KX, KY, ny, nx, {k0, dz, do_evanescent_modes, is_magnetic_field, pol});
  SliceProgress progress(nz - 1);
  for (int k = 0; k < nz - 1; ++k) {
    const std::size_t here = static_cast<std::size_t>(k) * plane;
    const std::size_t next = here + plane;
    propagator.step(forward.of(E + here), {E + next, F + next, N + here, N + next, X, Y, ny, nx});
    progress.step_done();
  }
}
