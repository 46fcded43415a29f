#include "main/device_fast.h"

#include "kernel/kernel.h"
#include "wpm/axis.h"
#include "wpm/index_pairs.h"

namespace {

std::vector<double2> as_double2(const std::vector<cpx>& values) {
  std::vector<double2> result;
  result.reserve(values.size());
  for (const cpx& value : values) result.push_back({value.real(), value.imag()});
  return result;
}

// The pairs of one step at a time, in the device's format.
class StepPairsOfRun {
 public:
  explicit StepPairsOfRun(const Run& run) : run_(run) {}

  StepPairs of(int k) {
    const cpx* N_i = run_.N + static_cast<std::size_t>(k) * run_.plane_samples();
    find_index_pairs(N_i, N_i + run_.plane_samples(), run_.plane_samples(), pairs_);
    n_i_.clear();
    n_t_.clear();
    for (const IndexPair& pair : pairs_.pairs) {
      n_i_.push_back({pair.n_i.real(), pair.n_i.imag()});
      n_t_.push_back({pair.n_t.real(), pair.n_t.imag()});
    }
    return {static_cast<int>(n_i_.size()), n_i_.data(), n_t_.data(), pairs_.which.data()};
  }

 private:
  const Run& run_;
  IndexPairs pairs_;
  std::vector<double2> n_i_, n_t_;
};

}  // namespace

bool transforms_serve(const Run& run) {
  return is_regular(run.KX, run.X, run.nx) && is_regular(run.KY, run.Y, run.ny);
}

void propagate_fast_on_device(const Run& run, double2* E, double* F, double2* N, double2* KX,
                              double* X, double2* KY, double* Y) {
  const Axis x(run.nx);
  const Axis y(run.ny);
  const std::vector<double2> phase_x = as_double2(x.phase);
  const std::vector<double2> phase_y = as_double2(y.phase);
  StepPairsOfRun pairs(run);
  fastKernelWrapper_3D(E, F, N, KX, X, KY, Y, run.k0, run.dz, run.dy, run.dx, run.nz, run.ny,
                       run.nx, run.blockSize, run.do_evanescent_modes, run.is_magnetic_field,
                       run.is_TE,
                       {run.nx, x.bin.data(), phase_x.data(), x.number.data(), x.drift.data()},
                       {run.ny, y.bin.data(), phase_y.data(), y.number.data(), y.drift.data()},
                       [&pairs](int k) { return pairs.of(k); });
}
