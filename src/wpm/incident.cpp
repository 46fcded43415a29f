// The incident field: the waves of a configuration on slice 0, one after the other.
#include <algorithm>
#include <cmath>
#include <memory>
#include <span>

#include "data/dataset.h"
#include "diagnostics.h"
#include "system/description.h"
#include "wpm/field_sources.h"
#include "wpm/source.h"
#include "wpm/wpm.h"

namespace {

using WaveFunction = double (*)(cpx*, double*, const cpx*, const struct_sysOptions*,
                                const struct_emfield&, bool);

struct Kind {
  shape s;
  const char* line;
  WaveFunction lay;
};

constexpr Kind kKinds[] = {
    {PLANE, "create PLANE ...", init_plane_wave},
    {GAUSSIAN, "create GAUSSIAN ...", init_gauss_wave},
    {RANDOM, "create RANDOM ...", init_random_wave},
    {LP01, "create LP01 ...", init_lp01_wave},
    {FIELD_FILE, "create FILE ...", init_file_wave},
};

// The sum of the waves that are added. A plane wave of amplitude a carries |a|^2 kz, so the flux of
// a sum is |sum of sqrt(kz) a|^2: over the slice it is the power of all waves and of what they have
// in common, for waves of any directions. Waves whose kz is negative carry none.
class WaveSum {
 public:
  explicit WaveSum(std::size_t samples) : E_(samples), F_(samples), root_flux_(samples) {}

  // Takes what already stands on slice 0, of wave f, as the first term.
  void begin(const cpx* E, const struct_sysOptions& so, const struct_emfield& f) {
    const double weight = root_kz(so, f);
    for (std::size_t s = 0; s < E_.size(); ++s) root_flux_[s] = weight * E[s];
  }

  // Adds wave f to slice 0.
  void add(const Kind& kind, cpx* E, double* F, const cpx* N, const struct_sysOptions& so,
           const struct_emfield& f, bool is_quiet) {
    kind.lay(E_.data(), F_.data(), N, &so, f, is_quiet);
    const double weight = root_kz(so, f);
    for (std::size_t s = 0; s < E_.size(); ++s) {
      E[s] += E_[s];
      root_flux_[s] += weight * E_[s];
      F[s] = std::norm(root_flux_[s]);
    }
  }

 private:
  static double root_kz(const struct_sysOptions& so, const struct_emfield& f) {
    return std::sqrt(std::max(0.0, kTwoPi * waves::Source(so, f).nuz));
  }

  std::vector<cpx> E_;
  std::vector<double> F_;
  std::vector<cpx> root_flux_;
};

bool is_finite(const cpx& value) {
  return std::isfinite(value.real()) && std::isfinite(value.imag());
}

// The waves that the field is made of: the last that replaces, and those added to it.
std::span<const struct_emfield> counting_waves(const std::vector<struct_emfield>& fields) {
  const auto last =
      std::find_if(fields.rbegin(), fields.rend(), [](const struct_emfield& f) { return !f.add; });
  const auto first = last == fields.rend() ? fields.begin() : last.base() - 1;
  return {first, fields.end()};
}

// Says so if the incident field is useless, and what is likely to be the reason.
void warn_of_useless_field(const struct_sysOptions& so, const std::vector<struct_emfield>& fields,
                           double lambda, std::span<const cpx> E, std::span<const cpx> N) {
  const auto warn = [&so](int line, const std::string& text) {
    diagnostics::warn(data::place(so.sysname, line) + ": " + text);
  };
  if (fields.empty() || lambda == 0.0) return;  // said of the description
  if (so.nz < 1) return;

  const std::span<const struct_emfield> waves = counting_waves(fields);
  const auto first_of = [&waves](const auto& is_wrong) {
    const auto found = std::find_if(waves.begin(), waves.end(), is_wrong);
    return found == waves.end() ? nullptr : &*found;
  };
  const auto zeros = std::count(N.begin(), N.end(), cpx(0.0));
  if (!std::all_of(E.begin(), E.end(), is_finite)) {
    const std::string what = "the incident field is not finite: ";
    const auto* narrow = first_of([](const struct_emfield& f) {
      return f.s == GAUSSIAN && (f.sigmax == 0 || f.sigmay == 0);
    });
    if (narrow != nullptr)
      warn(narrow->line, what + "a Gaussian wave needs a width in x and in y, sigmax and sigmay");
    else if (!std::all_of(N.begin(), N.end(), is_finite))
      warn(0, what + "the index of slice 0 is not finite; look at the first [layer]");
    else
      warn(waves.front().line, what + "look at amp, lambda and the place of the wave");
  } else if (std::all_of(E.begin(), E.end(), [](const cpx& e) { return e == 0.0; })) {
    const auto* dark = first_of([](const struct_emfield& f) { return f.amp == 0; });
    warn(dark != nullptr ? dark->line : waves.front().line,
         std::string("the incident field is zero everywhere: ") +
             (dark != nullptr ? "give the wave an amp" : "the wave lies outside of the domain"));
  } else if (zeros > 0 && diagnostics::warnings().empty()) {  // the reason may have been said
    warn(0, "slice 0 has index 0 at " + std::to_string(zeros) + " of " + std::to_string(N.size()) +
                " samples: light has no direction there, and the field behind is not finite; the "
                "first [layer] must fill its slices");
  }
}

const Kind* kind_of(const struct_emfield& f) {
  const auto* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [&f](const Kind& k) { return k.s == f.s; });
  return kind == std::end(kKinds) ? nullptr : kind;
}

}  // namespace

void lay_incident_field(cpx* E0, double* F0, const cpx* N0, const struct_sysOptions& so,
                        const std::vector<struct_emfield>& fields, bool is_quiet) {
  const Log log(is_quiet);
  const std::size_t samples = Frame(so).plane();
  const double lambda = vacuum_wavelength(fields, so.f);
  bool is_known = false;         // a wave before this one has a wavelength
  std::unique_ptr<WaveSum> sum;  // while waves are added to the one before them
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const struct_emfield& f = fields[i];
    const Kind* kind = kind_of(f);
    if (kind == nullptr) {
      log << "\t\t\033[31mUnknown wave. Please check configuration file.\033[0m" << std::endl;
      diagnostics::fail(so.sysname + ": a wave has an unknown shape");
    }
    log << "\t\t\t\t" << kind->line;
    if (f.add && i > 0) {
      if (sum == nullptr) {
        sum = std::make_unique<WaveSum>(samples);
        sum->begin(E0, so, fields[i - 1]);
      }
      sum->add(*kind, E0, F0, N0, so, f, is_quiet);
    } else {
      sum = nullptr;
      kind->lay(E0, F0, N0, &so, f, is_quiet);
    }
    const double own = f.lambda * so.f;
    if (is_known && own != lambda) {
      log << "\033[31m[W]\tAttention! Multiple wavelengths specified in configuration file.\033[0m"
          << std::endl;
      if (f.add)
        diagnostics::warn(data::place(so.sysname, f.line) +
                          ": an added wave has another wavelength than the first; the run has one");
    }
    is_known = is_known || own != 0.0;
  }
  warn_of_useless_field(so, fields, lambda, {E0, samples}, {N0, samples});
}

double init_E(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
              const std::vector<struct_emfield>* fields, bool is_quiet) {
  lay_incident_field(E, F, N, *so, *fields, is_quiet);
  const Frame frame(*so);
  for (std::size_t j = frame.plane(); j < frame.voxels(); ++j) {
    E[j] = 0.0;
    if (F != nullptr) F[j] = 0.0;
  }
  return vacuum_wavelength(*fields, so->f);
}
