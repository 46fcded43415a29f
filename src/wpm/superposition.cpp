#include "wpm/superposition.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "wpm/index_pairs.h"
#include "wpm/threads.h"

namespace {

const cpx ione(0.0, 1.0);

// A plane wave at a pair: all that does not depend on the sample's place.
class Term {
 public:
  Term(const PlaneWave& wave, const IndexPair& pair, const StepOptions& step)
      : mode_(mode_of(wave, pair, step)) {
    if (!mode_.contributes) return;
    g_ = mode_.transmitted(wave.f);
    if (mode_.adds_flux) flux_ = mode_.flux(g_);
    if (step.is_magnetic_field) g_ = g_ * cpx(mode_.field_factor, 0.0);
    const double damping = mode_.phi_z.imag();
    is_tame_ = std::fabs(damping) <= kTameExponent;
    decay_ = std::exp(-damping);
  }

  [[nodiscard]] bool contributes() const { return mode_.contributes; }
  [[nodiscard]] bool adds_flux() const { return mode_.adds_flux; }
  [[nodiscard]] double flux() const { return flux_; }

  [[nodiscard]] cpx field(double phi_xy) const { return g_ * phase_factor(phi_xy); }

 private:
  // Below this no exponential overflows, and cexp(a + ib) is exp(a) * (cos b, sin b) to the bit.
  static constexpr double kTameExponent = 700.0;

  // cexp(i * (phi_z + phi_xy)). The exponential of its real part belongs to the plane wave and the
  // pair; only sine and cosine are left for the sample. Tiny and non-finite angles, which the C
  // library treats in ways of its own, are left to it.
  [[nodiscard]] cpx phase_factor(double phi_xy) const {
    const double angle = mode_.phi_z.real() + phi_xy;
    const double magnitude = std::fabs(angle);
    if (!is_tame_ || !(magnitude > DBL_MIN && magnitude <= DBL_MAX))
      return std::exp(cpx(angle, mode_.phi_z.imag()) * ione);
    double sine = 0.0;
    double cosine = 0.0;
    ::sincos(angle, &sine, &cosine);
    return {decay_ * cosine, decay_ * sine};
  }

  Mode mode_;
  cpx g_;
  double flux_ = 0.0;
  double decay_ = 1.0;
  bool is_tame_ = false;
};

// Samples begin..end-1 of the slice, all plane waves.
void superpose_on(std::size_t begin, std::size_t end, const std::vector<PlaneWave>& waves,
                  const StepOptions& options, const SliceStep& slice) {
  IndexPairs pairs;
  find_index_pairs(slice.N_i + begin, slice.N_t + begin, end - begin, pairs);
  const auto nx = static_cast<std::size_t>(slice.nx);
  std::vector<Term> terms;
  terms.reserve(pairs.pairs.size());
  for (const PlaneWave& wave : waves) {
    terms.clear();
    for (const IndexPair& pair : pairs.pairs) terms.emplace_back(wave, pair, options);
    for (std::size_t s = begin; s < end;) {
      const double phi_y = slice.Y[s / nx] * wave.ky;
      const std::size_t row_end = std::min(end, (s / nx + 1) * nx);
      for (std::size_t i = s % nx; s < row_end; ++s, ++i) {
        const Term& term = terms[pairs.which[s - begin]];
        if (!term.contributes()) continue;
        if (term.adds_flux()) slice.F[s] += term.flux();
        slice.E[s] += term.field(slice.X[i] * wave.kx + phi_y);
      }
    }
  }
}

}  // namespace

void superpose(const std::vector<PlaneWave>& waves, const StepOptions& options,
               const SliceStep& slice) {
  const std::size_t samples =
      static_cast<std::size_t>(slice.nx) * static_cast<std::size_t>(slice.ny);
  // More parts than threads, so that one that is held up does not hold up all; not many more,
  // since each works out its own terms.
  const int parts = wpm::threads() == 1 ? 1 : 4 * wpm::threads();
  const auto boundary = [&](int i) {
    return samples * static_cast<std::size_t>(i) / static_cast<std::size_t>(parts);
  };
  constexpr double kTerm = 22.0;  // ns
  wpm::share_out(parts, kTerm * static_cast<double>(samples * waves.size()),
                 [&](int part, int /*worker*/) {
                   superpose_on(boundary(part), boundary(part + 1), waves, options, slice);
                 });
}

bool keep_what_decides(std::vector<PlaneWave>& waves, std::size_t samples,
                       const std::vector<IndexPair>& pairs, const StepOptions& options) {
  const auto is_nan = [](const PlaneWave& wave) {
    const bool is_infinite = std::isinf(wave.f.real()) || std::isinf(wave.f.imag());
    return !is_infinite && (std::isnan(wave.f.real()) || std::isnan(wave.f.imag()));
  };
  if (waves.size() < samples || !std::all_of(waves.begin(), waves.end(), is_nan)) return false;
  // A NaN amplitude that is carried on makes the field NaN, one that adds flux the flux. How many
  // of the waves from begin on do both for all pairs; 0 if a few do not.
  const auto enough = [&](auto begin, auto end) {
    constexpr std::ptrdiff_t kFew = 8;
    std::ptrdiff_t most = 0;
    for (const IndexPair& pair : pairs) {
      bool has_field = false;
      bool has_flux = false;
      for (auto wave = begin; !(has_field && has_flux); ++wave) {
        if (wave == end || wave - begin == kFew) return std::ptrdiff_t{0};
        const Mode mode = mode_of(*wave, pair, options);
        has_field = has_field || (mode.contributes && mode.amplitude != Mode::kCutOff);
        has_flux = has_flux || (mode.contributes && mode.adds_flux);
        most = std::max(most, wave - begin + 1);
      }
    }
    return most;
  };
  const std::ptrdiff_t first = enough(waves.begin(), waves.end());
  const std::ptrdiff_t last = enough(waves.rbegin(), waves.rend());
  if (first == 0 || last == 0 || first + last >= static_cast<std::ptrdiff_t>(waves.size()))
    return false;
  waves.erase(waves.begin() + first, waves.end() - last);
  return true;
}
