#include "wpm/interpolation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "wpm/cost.h"
#include "wpm/skeleton.h"
#include "wpm/threads.h"

namespace wpm {
namespace {

constexpr int kFewestNodes = 3;
constexpr int kMostNodes = 12;
constexpr std::size_t kProbes = 40;
constexpr double kTerm = 2.0;  // ns, a product of complex numbers and its sum

// Chebyshev points of [low, high], ends included.
std::vector<double> chebyshev(double low, double high, int count) {
  if (low == high) return {low};
  std::vector<double> nodes;
  nodes.reserve(static_cast<std::size_t>(count));
  for (int j = 0; j < count; ++j)
    nodes.push_back(0.5 * (low + high) -
                    0.5 * (high - low) * std::cos(std::numbers::pi * j / (count - 1)));
  return nodes;
}

std::vector<double> lagrange_at(const std::vector<double>& nodes, double x) {
  std::vector<double> values(nodes.size(), 1.0);
  for (std::size_t j = 0; j < nodes.size(); ++j)
    for (std::size_t m = 0; m < nodes.size(); ++m)
      if (m != j) values[j] *= (x - nodes[m]) / (nodes[j] - nodes[m]);
  return values;
}

bool is_changed(const IndexPair& pair) {
  return pair.n_i.real() != pair.n_t.real();
}

}  // namespace

PairInterpolation::PairInterpolation(const StepOptions& options, const Shells& shells)
    : options_(options), shells_(shells) {
  changed_.is_changed = true;
}

// Trimmed coefficients change in steps, and those of TM hold the extinction in a way of their own.
bool PairInterpolation::is_smooth(const std::vector<IndexPair>& pairs) const {
  const bool has_fresnel = options_.pol == TE || options_.pol == TM;
  return std::all_of(pairs.begin(), pairs.end(), [&](const IndexPair& pair) {
    if (!(pair.n_i.real() > 0.0 && pair.n_t.real() > 0.0)) return false;
    if (!is_changed(pair) || !has_fresnel) return true;
    return !options_.is_trimmed &&
           (options_.pol == TE || (pair.n_i.imag() == 0.0 && pair.n_t.imag() == 0.0));
  });
}

bool PairInterpolation::prepare(const std::vector<IndexPair>& pairs, double allowed) {
  cost_ = 0.0;
  if (!is_smooth(pairs)) return false;
  std::vector<IndexPair> of_same;
  std::vector<IndexPair> of_changed;
  for (const IndexPair& pair : pairs) (is_changed(pair) ? of_changed : of_same).push_back(pair);
  if (!fit(same_, of_same, allowed) || !fit(changed_, of_changed, allowed)) return false;

  functions_.clear();
  flux_functions_.clear();
  for (const Family* family : {&same_, &changed_}) {
    for (const std::size_t c : family->chosen) functions_.push_back(family->candidates[c]);
    for (const std::size_t c : family->flux_chosen)
      flux_functions_.push_back(family->candidates[c]);
  }
  if (functions_.size() >= pairs.size()) return false;

  cost_ += static_cast<double>(pairs.size() * functions_.size()) * kTerm *
           static_cast<double>(std::max(same_.candidates.size(), changed_.candidates.size()));
  weights_.assign(functions_.size(), std::vector<cpx>(pairs.size()));
  flux_weights_.assign(pairs.size() * flux_functions_.size(), 0.0);
  constexpr std::size_t kPart = 256;
  const std::size_t parts = (pairs.size() + kPart - 1) / kPart;
  share_out(static_cast<int>(parts), 500.0 * static_cast<double>(pairs.size()),
            [&](int part, int /*worker*/) {
              const std::size_t first = static_cast<std::size_t>(part) * kPart;
              std::vector<cpx> of_pair(functions_.size());
              for (std::size_t c = first; c < std::min(pairs.size(), first + kPart); ++c) {
                const bool changes = is_changed(pairs[c]);
                const Family& family = changes ? changed_ : same_;
                const std::size_t begin = changes ? same_.chosen.size() : 0;
                const std::size_t flux_begin = changes ? same_.flux_chosen.size() : 0;
                weigh(family, pairs[c], of_pair.data(),
                      flux_weights_.data() + c * flux_functions_.size() + flux_begin);
                for (std::size_t r = 0; r < family.chosen.size(); ++r)
                  weights_[begin + r][c] = of_pair[r];
              }
            });
  return true;
}

// Keeps the range and the nodes of the last step where they serve this one, so that transfer
// functions do, too.
bool PairInterpolation::fit(Family& family, const std::vector<IndexPair>& members, double allowed) {
  if (members.empty()) {
    family.chosen.clear();
    family.flux_chosen.clear();
    return true;
  }
  const auto by_i = [](const IndexPair& a, const IndexPair& b) {
    return a.n_i.real() < b.n_i.real();
  };
  const auto by_t = [](const IndexPair& a, const IndexPair& b) {
    return a.n_t.real() < b.n_t.real();
  };
  const auto [first_i, last_i] = std::minmax_element(members.begin(), members.end(), by_i);
  const auto [first_t, last_t] = std::minmax_element(members.begin(), members.end(), by_t);
  const double first[] = {first_i->n_i.real(), first_t->n_t.real()};
  const double last[] = {last_i->n_i.real(), last_t->n_t.real()};
  const auto is_wide = [](double low, double high, double from, double to) {
    return high - low > 1.5 * (to - from);
  };
  const auto holds = [&](double low, double high, int which) {
    return low <= first[which] && last[which] <= high &&
           !is_wide(low, high, first[which], last[which]);
  };
  // A range that grows by what a slice lacks soon holds all slices that are alike.
  const auto grow = [&](double& low, double& high, int which) {
    const double joint_low = std::min(low, first[which]);
    const double joint_high = std::max(high, last[which]);
    const bool is_joint =
        family.nodes > 0 && !is_wide(joint_low, joint_high, first[which], last[which]);
    low = is_joint ? joint_low : first[which];
    high = is_joint ? joint_high : last[which];
  };
  if (family.nodes == 0 || !holds(family.low_i, family.high_i, 0) ||
      !holds(family.low_t, family.high_t, 1)) {
    grow(family.low_i, family.high_i, 0);
    grow(family.low_t, family.high_t, 1);
    family.nodes = kFewestNodes;
  }
  std::vector<IndexPair> probes = {*first_i, *last_i, *first_t, *last_t};
  const std::size_t stride = std::max<std::size_t>(1, members.size() / kProbes);
  for (std::size_t m = 0; m < members.size(); m += stride) probes.push_back(members[m]);
  for (int nodes = family.nodes; nodes <= kMostNodes; ++nodes)
    if (try_nodes(family, nodes, probes, allowed)) return true;
  family.nodes = 0;
  return false;
}

bool PairInterpolation::try_nodes(Family& family, int nodes, const std::vector<IndexPair>& probes,
                                  double allowed) {
  family.nodes = nodes;
  family.at_i = chebyshev(family.low_i, family.high_i, nodes);
  family.at_t = chebyshev(family.low_t, family.high_t, nodes);
  family.candidates.clear();
  if (!family.is_changed)
    for (const double n : family.at_t) family.candidates.push_back({n, n});
  else
    for (const double n_i : family.at_i)
      for (const double n_t : family.at_t) family.candidates.push_back({n_i, n_t});

  // Half of what is allowed for the choice of functions, which the weights of a candidate magnify a
  // few times, the rest for the polynomials.
  Rows fields(family.candidates.size());
  Rows fluxes(family.candidates.size());
  for (std::size_t c = 0; c < family.candidates.size(); ++c)
    sample(family.candidates[c], fields[c], fluxes[c]);
  double flux = 0.0;
  for (const cpx& value : fluxes.front()) flux += value.real();
  const double relative = options_.tolerance / 8;
  Skeleton skeleton = skeleton_of(fields, allowed / 8);
  family.chosen = std::move(skeleton.chosen);
  family.weights = std::move(skeleton.weights);
  skeleton = skeleton_of(fluxes, relative * flux);
  family.flux_chosen = std::move(skeleton.chosen);
  family.flux_weights = std::move(skeleton.weights);

  const auto functions = static_cast<double>(family.chosen.size());
  cost_ += static_cast<double>(family.candidates.size() + probes.size()) * (Shells::kCount + 1) *
           (kModeCost + 2 * functions * kTerm);

  std::vector<cpx> field;
  std::vector<cpx> field_flux;
  std::vector<cpx> weights(family.chosen.size());
  std::vector<double> flux_weights(family.flux_chosen.size());
  for (IndexPair probe : probes) {
    probe.n_i = probe.n_i.real();  // absorption is exact
    probe.n_t = probe.n_t.real();
    sample(probe, field, field_flux);
    weigh(family, probe, weights.data(), flux_weights.data());
    double error = 0.0;
    double flux_error = 0.0;
    for (std::size_t k = 0; k < field.size(); ++k) {
      cpx rest = field[k];
      cpx flux_rest = field_flux[k];
      for (std::size_t r = 0; r < weights.size(); ++r)
        rest -= weights[r] * fields[family.chosen[r]][k];
      for (std::size_t r = 0; r < flux_weights.size(); ++r)
        flux_rest -= flux_weights[r] * fluxes[family.flux_chosen[r]][k];
      error += std::norm(rest);
      flux_error += std::abs(flux_rest);
    }
    if (!(std::sqrt(error) <= allowed) || !(flux_error <= 8 * relative * flux)) return false;
  }
  return true;
}

std::vector<double> PairInterpolation::lagrange(const Family& family, const IndexPair& pair) {
  std::vector<double> of_t = lagrange_at(family.at_t, pair.n_t.real());
  if (!family.is_changed) return of_t;
  const std::vector<double> of_i = lagrange_at(family.at_i, pair.n_i.real());
  std::vector<double> products;
  for (const double i : of_i)
    for (const double t : of_t) products.push_back(i * t);
  return products;
}

void PairInterpolation::weigh(const Family& family, const IndexPair& pair, cpx* weights,
                              double* flux) const {
  const std::vector<double> polynomials = lagrange(family, pair);
  std::fill_n(weights, family.chosen.size(), 0.0);
  std::fill_n(flux, family.flux_chosen.size(), 0.0);
  for (std::size_t c = 0; c < polynomials.size(); ++c) {
    for (std::size_t r = 0; r < family.chosen.size(); ++r)
      weights[r] += polynomials[c] * family.weights[c][r];
    for (std::size_t r = 0; r < family.flux_chosen.size(); ++r)
      flux[r] += polynomials[c] * family.flux_weights[c][r].real();
  }
  const double absorption = std::exp(-(options_.k0 * pair.n_t.imag()) * options_.dz);
  for (std::size_t r = 0; r < family.chosen.size(); ++r) weights[r] *= absorption;
}

// The pair's functions at the ends of the shells, times what the spectrum holds there: the length
// of a row is what it may add to the root mean square of the field.
void PairInterpolation::sample(const IndexPair& pair, std::vector<cpx>& field,
                               std::vector<cpx>& flux) const {
  field.assign(Shells::kCount + 1, 0.0);
  flux.assign(Shells::kCount + 1, 0.0);
  for (int shell = 0; shell <= Shells::kCount; ++shell) {
    // Plane waves of a shell are taken for those of its ends, half of them each.
    const auto both = [&](const auto& of) {
      return (shell > 0 ? of(shell - 1) : 0.0) + (shell < Shells::kCount ? of(shell) : 0.0);
    };
    const double power = 0.5 * both([&](int s) { return shells_.power(s); });
    if (power == 0.0) continue;
    const Mode mode =
        mode_of({1.0, 0.0, 0.0, shells_.kxy_sq(shell), shell == 0 ? 0 : 1, 0}, pair, options_);
    if (!mode.contributes) continue;
    const cpx f_t = mode.transmitted(1.0);
    const auto k = static_cast<std::size_t>(shell);
    field[k] = std::sqrt(power) * mode.field_factor * f_t * std::exp(mode.phi_z * cpx(0.0, 1.0));
    if (mode.adds_flux) flux[k] = power * mode.flux(f_t);
  }
}

}  // namespace wpm
