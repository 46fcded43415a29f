#include "wpm/many_pairs.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "wpm/cost.h"
#include "wpm/loops.h"
#include "wpm/spot_check.h"

namespace wpm {
namespace {

constexpr std::size_t kMany = 4;    // pairs, from which on fewer functions may serve
constexpr int kLongestRest = 64;    // steps, where looking for them is in vain
constexpr double kDear = 0.1;       // of what the pairs themselves take
constexpr int kStepsToACheck = 32;  // the first of them is compared
constexpr int kSamples = 3;         // at each comparison

double largest_modulus(const cpx* E, std::size_t samples) {
  double square = 0.0;
  for (std::size_t s = 0; s < samples; ++s) square = std::max(square, std::norm(E[s]));
  return std::sqrt(square);
}

}  // namespace

ManyPairs::ManyPairs(const Grid& grid, const StepOptions& options, const Axis& x, const Axis& y,
                     FoldedFrequencies folds)
    : grid_(grid),
      options_(options),
      x_(x),
      y_(y),
      folds_(std::move(folds)),
      shells_(folds_),
      pairs_(options, shells_) {}

bool ManyPairs::serve(const Slice& from, const PairRuns& runs, const BinnedSpectrum& spectrum,
                      TransferStore& transfers) {
  if (runs.pairs().size() < kMany) return false;
  if (steps_to_rest_ > 0) {
    --steps_to_rest_;
    return false;
  }
  largest_ = largest_modulus(from.E, grid_.plane());
  // A magnetic field is smaller behind the step, by this much.
  field_factor_ = mode_of({1.0, 0.0, 0.0, 0.0, 0, 0}, runs.pairs().front(), options_).field_factor;
  largest_ *= field_factor_;
  shells_.take(spectrum, x_, y_);
  const double of_pairs = cost_of(runs.pairs(), runs.pairs(), transfers);
  const bool serves =
      pairs_.prepare(runs.pairs(), allowed_error()) &&
      pairs_.cost() + cost_of(pairs_.functions(), all_functions(), transfers) < of_pairs;
  // What was in vain is mostly in vain in the next step, too. Where it is cheap beside the pairs,
  // it is tried again at once.
  const bool is_cheap = pairs_.cost() < kDear * of_pairs;
  rest_ = serves || is_cheap ? 0 : std::clamp(2 * rest_, 1, kLongestRest);
  steps_to_rest_ = rest_;
  return serves && transfers.are_tame(all_functions());
}

std::vector<IndexPair> ManyPairs::all_functions() const {
  std::vector<IndexPair> all = pairs_.functions();
  all.insert(all.end(), pairs_.flux_functions().begin(), pairs_.flux_functions().end());
  return all;
}

// Of the sums of some pairs, with the transfer functions of some; the store is left asked for
// these.
double ManyPairs::cost_of(const std::vector<IndexPair>& transformed,
                          const std::vector<IndexPair>& needed, TransferStore& transfers) const {
  return cost_by_transforms({static_cast<double>(grid_.plane()), 0, 0,
                             static_cast<double>(transformed.size()),
                             static_cast<double>(transfers.begin(needed))});
}

// Of the root mean square. The largest error lies above it as the largest modulus of the field
// does, which may be gathered in a beam, and by some 5 where the errors are those of scattered
// waves.
double ManyPairs::allowed_error() const {
  constexpr double kScattered = 6.0;
  constexpr double kMargin = 1.2;
  const double root_mean_square = std::sqrt(shells_.total_power()) * field_factor_;
  return options_.tolerance / kMargin * std::min(root_mean_square, largest_ / kScattered);
}

void ManyPairs::sum(const Slice& to, const PairRuns& runs, const BinnedSpectrum& spectrum,
                    TransferStore& transfers, PlaneSums& sums) {
  const std::vector<double> flux = flux_of_pairs(runs, spectrum, transfers, sums);
  const std::vector<Sample> samples = choose_samples(to, runs);
  const std::vector<IndexPair>& functions = pairs_.functions();
  const auto batch = static_cast<std::size_t>(sums.batch());
  for (std::size_t first = 0; first < functions.size(); first += batch) {
    const std::size_t end = std::min(functions.size(), first + batch);
    sums.columns(spectrum, transfers.get({functions.data() + first, end - first}));
    constexpr double kRowPass = 5.0;  // ns a sample
    sums.rows(kRowPass * static_cast<double>((end - first) * grid_.plane()),
              [&](int group, PlaneSums::RowGroup rows) {
                for (std::size_t r = first; r < end; ++r) {
                  rows.prepare(static_cast<int>(r - first));
                  place(group, r, flux, runs, rows, to);
                }
              });
  }
  compare(samples, to, spectrum);
}

// Adds function number r, each sample with the weight of its pair, to eight rows.
void ManyPairs::place(int group, std::size_t r, const std::vector<double>& flux,
                      const PairRuns& runs, const PlaneSums::RowGroup& rows,
                      const Slice& to) const {
  const auto row_size = static_cast<std::size_t>(grid_.nx);
  const cpx* weights = pairs_.weights(r);
  cpx* lines[kBatch];
  for (int line = 0; line < kBatch; ++line) lines[line] = rows.room(line);
  for (const Run& run : runs.in_group(group)) {
    cpx* line = lines[run.row % kBatch];
    const cpx weight = weights[run.pair];
    for (int i = run.begin; i < run.end; ++i) line[i] = weight;
    if (r > 0) continue;
    double* F = to.F + static_cast<std::size_t>(run.row) * row_size;
    for (int i = run.begin; i < run.end; ++i) F[i] += flux[run.pair];
  }
  for (int line = 0; line < lines_of_group(grid_.ny, group); ++line) {
    const PlaneSums::Row row = rows.row(line);
    add_weighted(grid_.nx, row.sum, row.correction, row.drift, rows.room(line),
                 to.E + static_cast<std::size_t>(group * kBatch + line) * row_size);
  }
}

std::vector<double> ManyPairs::flux_of_pairs(const PairRuns& runs, const BinnedSpectrum& spectrum,
                                             TransferStore& transfers, PlaneSums& sums) const {
  std::vector<double> of_function;
  for (const IndexPair& function : pairs_.flux_functions())
    of_function.push_back(sums.flux(spectrum, transfers.get(function)));
  std::vector<double> flux(runs.pairs().size());
  for (std::uint32_t c = 0; c < flux.size(); ++c)
    for (std::size_t r = 0; r < of_function.size(); ++r)
      flux[c] += pairs_.flux_weights(c)[r] * of_function[r];
  return flux;
}

std::vector<ManyPairs::Sample> ManyPairs::choose_samples(const Slice& to, const PairRuns& runs) {
  std::vector<Sample> samples;
  if (steps_++ % kStepsToACheck != 0) return samples;
  for (int s = 0; s < kSamples; ++s) {
    const int j = static_cast<int>(random_() % static_cast<unsigned>(grid_.ny));
    const int i = static_cast<int>(random_() % static_cast<unsigned>(grid_.nx));
    for (const Run& run : runs.in_group(j / kBatch))
      if (run.row == j && run.begin <= i && i < run.end)
        samples.push_back({j, i, runs.pairs()[run.pair],
                           to.E[static_cast<std::size_t>(j) * static_cast<std::size_t>(grid_.nx) +
                                static_cast<std::size_t>(i)]});
  }
  return samples;
}

void ManyPairs::compare(const std::vector<Sample>& samples, const Slice& to,
                        const BinnedSpectrum& spectrum) {
  if (samples.empty() || !(largest_ > 0.0)) return;
  Transfer transfer;
  for (const Sample& sample : samples) {
    find_transfer(sample.pair, folds_, options_, transfer);
    const cpx exact = field_at(sample.j, sample.i, spectrum, transfer, x_, y_);
    const cpx found = to.E[static_cast<std::size_t>(sample.j) * static_cast<std::size_t>(grid_.nx) +
                           static_cast<std::size_t>(sample.i)] -
                      sample.before;
    error_found_ = std::max(error_found_, std::abs(found - exact) / largest_);
  }
}

}  // namespace wpm
