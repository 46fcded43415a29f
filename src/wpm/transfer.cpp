#include "wpm/transfer.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <utility>

#include "wpm/index_pairs.h"

namespace {

// Amplitudes of this size and sums of them fit single precision, where the drift is worked out.
constexpr double kTameField = 1e15;

}  // namespace

FoldedFrequencies::FoldedFrequencies(const Axis& x, const Axis& y, const cpx* KX, const cpx* KY)
    : kx(static_cast<std::size_t>(x.folds)),
      ky(static_cast<std::size_t>(y.folds)),
      fold_of_bin(x.fold) {
  const auto collect = [](const Axis& axis, const cpx* K, std::vector<double>& k) {
    for (int p = 0; p < axis.n; ++p)
      k[static_cast<std::size_t>(
          axis.fold[static_cast<std::size_t>(axis.bin[static_cast<std::size_t>(p)])])] =
          K[p].real();
  };
  collect(x, KX, kx);
  collect(y, KY, ky);
}

Transfer transfer_of(const IndexPair& pair, const FoldedFrequencies& folds,
                     const StepOptions& options) {
  const std::size_t columns = folds.fold_of_bin.size();
  const auto rows = static_cast<int>(folds.ky.size());
  Transfer transfer;
  transfer.field.resize(columns * folds.ky.size());
  transfer.flux.resize(transfer.field.size());
  bool is_tame = true;
#pragma omp parallel for schedule(static) reduction(&& : is_tame)
  for (int row = 0; row < rows; ++row) {
    std::vector<cpx> field(folds.kx.size());
    std::vector<double> flux(folds.kx.size());
    for (std::size_t fold = 0; fold < folds.kx.size(); ++fold) {
      const double kx = folds.kx[fold];
      const double ky = folds.ky[static_cast<std::size_t>(row)];
      const PlaneWave unit = {1.0, kx, ky, kx * kx + ky * ky, static_cast<int>(fold), row};
      const Mode mode = mode_of(unit, pair, options);
      if (!mode.contributes) continue;
      const cpx f_t = mode.transmitted(unit.f);
      field[fold] = f_t * mode.field_factor * std::exp(mode.phi_z * cpx(0.0, 1.0));
      if (mode.adds_flux) flux[fold] = mode.flux(f_t);
      is_tame = is_tame && std::abs(field[fold]) < kTameField && std::fabs(flux[fold]) <= DBL_MAX;
    }
    const std::size_t begin = static_cast<std::size_t>(row) * columns;
    for (std::size_t bin = 0; bin < columns; ++bin) {
      const auto fold = static_cast<std::size_t>(folds.fold_of_bin[bin]);
      transfer.field[begin + bin] = field[fold];
      transfer.flux[begin + bin] = flux[fold];
    }
  }
  transfer.is_tame = is_tame;
  return transfer;
}

TransferStore::TransferStore(FoldedFrequencies folds, const StepOptions& options, std::size_t bytes)
    : folds_(std::move(folds)),
      options_(options),
      capacity_(std::max<std::size_t>(1, bytes / (folds_.fold_of_bin.size() * folds_.ky.size() *
                                                  (sizeof(cpx) + sizeof(double))))) {}

const Transfer& TransferStore::get(const IndexPair& pair) {
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return same_bits(entry.pair, pair); });
  if (found != entries_.end()) {
    entries_.splice(entries_.begin(), entries_, found);
  } else {
    if (entries_.size() >= capacity_) entries_.pop_back();
    entries_.push_front({pair, transfer_of(pair, folds_, options_)});
  }
  return entries_.front().transfer;
}

bool TransferStore::has(const IndexPair& pair) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const Entry& entry) { return same_bits(entry.pair, pair); });
}
