#include "wpm/transfer.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <map>
#include <utility>

#include "wpm/threads.h"

namespace wpm {
namespace {

// Amplitudes of this size and sums of them fit single precision, where the drift is worked out.
constexpr double kTameField = 1e15;

constexpr double kMode = 100.0;  // ns

// Row kx of the transfer function. False if it is not tame.
bool fill_row(std::size_t fold_x, const IndexPair& pair, const FoldedFrequencies& folds,
              const StepOptions& options, Transfer& transfer) {
  const std::size_t rows = folds.ky.size();
  const double kx = folds.kx[fold_x];
  bool is_tame = true;
  bool is_blank = true;
  for (std::size_t fold_y = 0; fold_y < rows; ++fold_y) {
    cpx& field = transfer.field[fold_x * rows + fold_y];
    double& flux = transfer.flux[fold_x * rows + fold_y];
    field = 0.0;
    flux = 0.0;
    const double ky = folds.ky[fold_y];
    const PlaneWave unit = {1.0,
                            kx,
                            ky,
                            kx * kx + ky * ky,
                            folds.first + static_cast<int>(fold_x),
                            static_cast<int>(fold_y)};
    const Mode mode = mode_of(unit, pair, options);
    if (!mode.contributes) continue;
    const cpx f_t = mode.transmitted(unit.f);
    field = f_t * mode.field_factor * std::exp(mode.phi_z * cpx(0.0, 1.0));
    if (mode.adds_flux) flux = mode.flux(f_t);
    is_tame = is_tame && std::abs(field) < kTameField && std::fabs(flux) <= DBL_MAX;
    is_blank = is_blank && field == 0.0;
  }
  transfer.is_blank[fold_x] = is_blank ? 1 : 0;
  return is_tame;
}

}  // namespace

FoldedFrequencies::FoldedFrequencies(const Axis& x, const Axis& y, const cpx* KX, const cpx* KY,
                                     const ranks::Share& folds)
    : first(folds.begin) {
  const auto collect = [](const Axis& axis, const cpx* K) {
    std::map<int, double> of_fold;
    for (std::size_t p = 0; p < axis.bin.size(); ++p)
      of_fold[axis.fold[static_cast<std::size_t>(axis.bin[p])]] = K[p].real();
    return of_fold;
  };
  for (const auto& [fold, k] : collect(x, KX))
    if (folds.holds(fold)) kx.push_back(k);
  for (const auto& [fold, k] : collect(y, KY)) ky.push_back(k);
}

void find_transfer(const IndexPair& pair, const FoldedFrequencies& folds,
                   const StepOptions& options, Transfer& transfer) {
  const std::size_t size = folds.kx.size() * folds.ky.size();
  transfer.field.resize(size);
  transfer.flux.resize(size);
  transfer.is_blank.resize(folds.kx.size());
  std::vector<char> is_tame(folds.kx.size());
  share_out(static_cast<int>(folds.kx.size()), kMode * static_cast<double>(size),
            [&](int fold_x, int /*worker*/) {
              const auto at = static_cast<std::size_t>(fold_x);
              is_tame[at] = fill_row(at, pair, folds, options, transfer) ? 1 : 0;
            });
  transfer.is_tame = std::find(is_tame.begin(), is_tame.end(), 0) == is_tame.end();
}

TransferStore::TransferStore(FoldedFrequencies folds, const StepOptions& options, std::size_t bytes)
    : folds_(std::move(folds)),
      options_(options),
      capacity_(bytes / std::max<std::size_t>(1, folds_.kx.size() * folds_.ky.size() *
                                                     (sizeof(cpx) + sizeof(double)))) {}

std::size_t TransferStore::begin(const std::vector<IndexPair>& pairs) {
  for (Entry& entry : entries_) entry.is_needed = false;
  std::size_t missing = 0;
  for (const IndexPair& pair : pairs) {
    const auto found = place_.find(pair);
    if (found == place_.end()) {
      ++missing;
      continue;
    }
    found->second->is_needed = true;
    entries_.splice(entries_.begin(), entries_, found->second);
  }
  return missing;
}

const Transfer& TransferStore::get(const IndexPair& pair) {
  std::size_t passing = 0;
  return find(pair, passing);
}

std::span<const Transfer* const> TransferStore::get(std::span<const IndexPair> pairs) {
  std::size_t passing = 0;
  together_.clear();
  for (const IndexPair& pair : pairs) together_.push_back(&find(pair, passing));
  return together_;
}

const Transfer& TransferStore::find(const IndexPair& pair, std::size_t& passing) {
  const auto found = place_.find(pair);
  if (found != place_.end()) return found->second->transfer;
  ++made_;
  if (entries_.size() < capacity_) {
    entries_.emplace_front();
  } else if (!entries_.empty() && !entries_.back().is_needed) {
    entries_.splice(entries_.begin(), entries_, std::prev(entries_.end()));
    place_.erase(entries_.front().pair);
  } else {
    if (passing_.size() == passing) passing_.emplace_back();
    Transfer& transfer = *std::next(passing_.begin(), static_cast<std::ptrdiff_t>(passing++));
    find_transfer(pair, folds_, options_, transfer);
    return transfer;
  }
  Entry& entry = entries_.front();
  entry.pair = pair;
  entry.is_needed = true;
  place_[pair] = entries_.begin();
  find_transfer(pair, folds_, options_, entry.transfer);
  return entry.transfer;
}

bool TransferStore::are_tame(const std::vector<IndexPair>& pairs) {
  return std::all_of(pairs.begin(), pairs.end(),
                     [&](const IndexPair& pair) { return is_tame(pair); });
}

bool TransferStore::is_tame(const IndexPair& pair) {
  constexpr std::size_t kMany = 100000;
  const auto known = is_tame_.find(pair);
  if (known != is_tame_.end()) return known->second;
  if (is_tame_.size() >= kMany) is_tame_.clear();
  return is_tame_[pair] = get(pair).is_tame;
}

}  // namespace wpm
