#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <utility>

#include "diagnostics.h"
#include "log.h"
#include "wpm/wpm.h"

namespace {

constexpr double kTwoPi = 6.2831853;  // the system's value, not a truncation to mend
constexpr double kPi = 3.14159265;

// The locals that the three wave functions share.
struct Source {
  Source(const struct_sysOptions& so, const struct_emfield& f);

  // The phase of sample (ix, iy), whose local index is n.
  [[nodiscard]] double phase(int ix, int iy, double n) const {
    return ((x(ix) * nux + y(iy) * nuy) + z * nuz) * (kTwoPi * n);
  }
  [[nodiscard]] double x(int ix) const { return (ix - cx) * dx - x0; }
  [[nodiscard]] double y(int iy) const { return (iy - cy) * dy - y0; }

  double metres;  // per file unit
  double dx, dy;
  int nx, ny;
  int cx, cy;  // the sample at 0
  double lambda;
  double sx, sy, sz;
  double nux, nuy, nuz;
  double x0, y0, z;
};

Source::Source(const struct_sysOptions& so, const struct_emfield& f)
    : metres(so.f),
      dx(so.dx == 0 ? 1.0 : so.dx * metres),
      dy(so.dy == 0 ? 1.0 : so.dy * metres),
      nx(so.nx == 0 ? 1 : so.nx),
      ny(so.ny == 0 ? 1 : so.ny),
      cx(nx / 2),
      cy(ny / 2),
      lambda(f.lambda * metres) {
  const double dz = so.dz == 0 ? 1.0 : so.dz * metres;
  const double nu0 = 1.0 / lambda;
  const double theta = f.theta * kPi / 180.0;
  const double phi = f.phi * kPi / 180.0;
  sx = std::cos(phi) * std::sin(theta);
  sy = std::sin(theta) * std::sin(phi);
  sz = std::cos(theta);
  nux = sx * nu0;
  nuy = sy * nu0;
  nuz = nu0 * sz;
  x0 = f.x * metres;
  y0 = f.y * metres;
  z = 0.0 * dz - f.z * metres;
}

// Stores value(ix, iy, n) of every sample in slice 0 of E, and flux(amplitude) in F. value also
// sets the sample's amplitude. A volume without a slice 0 takes nothing and reads as index 0.
template <typename Value>
void fill_slice(cpx* E, double* F, const cpx* N, const struct_sysOptions& so, const Source& source,
                Value value) {
  const std::int64_t count = std::int64_t{so.nx} * so.ny * so.nz;
  // ix outermost: it fixes which sample gets which random number.
  for (int ix = 0; ix < source.nx; ++ix)
    for (int iy = 0; iy < source.ny; ++iy) {
      const std::int64_t index = std::int64_t{iy} * source.nx + ix;
      double amplitude = 0.0;
      const cpx field = value(ix, iy, index < count ? N[index].real() : 0.0, amplitude);
      if (index >= count) continue;
      E[index] = field;
      F[index] = amplitude * amplitude * (kTwoPi * source.nuz);
    }
}

// The red block of a wave with a direction; own: the lines that only its kind has.
void report_wave(const Log& log, const Source& source, const struct_emfield& f,
                 std::initializer_list<std::pair<const char*, double>> own) {
  const auto line = [&log](const char* name, double value) {
    log << "\t\t\t\t" << name << " = " << value << std::endl;
  };
  log << std::endl << std::endl << "\033[31m";
  line("scale", source.metres);
  line("amplitude", f.amp);
  line("lambda", f.lambda);
  line("theta", f.theta);
  line("phi", f.phi);
  for (const auto& [name, value] : own) line(name, value);
  line("sx", source.sx);
  line("sy", source.sy);
  line("sz", source.sz);
  log << "\033[0m" << std::endl;
}

}  // namespace

double init_plane_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                       const struct_emfield& f, bool is_quiet) {
  const Source source(*so, f);
  report_wave(Log(is_quiet), source, f, {{"x", f.x}, {"y", f.y}});
  fill_slice(E, F, N, *so, source, [&](int ix, int iy, double n, double& amplitude) {
    amplitude = f.amp;
    return std::exp(cpx(0.0, source.phase(ix, iy, n))) * f.amp;
  });
  return source.lambda;
}

double init_gauss_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                       const struct_emfield& f, bool is_quiet) {
  const Source source(*so, f);
  const double sigmax = f.sigmax * source.metres;
  const double sigmay = f.sigmay * source.metres;
  report_wave(Log(is_quiet), source, f, {{"beta", f.beta}});
  fill_slice(E, F, N, *so, source, [&](int ix, int iy, double n, double& amplitude) {
    const double x = source.x(ix);
    const double y = source.y(iy);
    // Divided by pi: sigma is the half width where the intensity is exp(-2/pi) of its peak.
    const double envelope = -((y * y) / (sigmay * sigmay) + (x * x) / (sigmax * sigmax)) / kPi;
    amplitude = f.amp;
    return std::exp(cpx(envelope, source.phase(ix, iy, n))) * f.amp;
  });
  return source.lambda;
}

double init_random_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                        const struct_emfield& f, bool is_quiet) {
  const Source source(*so, f);
  Log(is_quiet) << std::endl
                << std::endl
                << "\033[31m\t\t\t\tscale = " << source.metres << std::endl
                << "*** Random Wave ***" << std::endl
                << "\033[0m" << std::endl;
  fill_slice(E, F, N, *so, source, [&](int ix, int iy, double n, double& amplitude) {
    // The generator is never seeded: every run gets its default sequence. The amplitude goes as the
    // square of amp.
    const double rndm = ((std::rand() % 1000) * f.amp) / 1000.0;
    amplitude = rndm * f.amp;
    return std::exp(cpx(0.0, source.phase(ix, iy, n))) * amplitude;
  });
  return source.lambda;
}

namespace {

void warn_of_useless_waves(const struct_sysOptions& so, const std::vector<struct_emfield>& fields,
                           double lambda) {
  if (fields.empty())
    diagnostics::warn(so.sysname + ": there is no [wave]; the field stays zero");
  else if (lambda == 0.0)
    diagnostics::warn(so.sysname + ": the wavelength is 0; give each [wave] a lambda");
}

}  // namespace

double init_E(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
              const std::vector<struct_emfield>* fields, bool is_quiet) {
  const Log log(is_quiet);
  double lambda = 0.0;
  for (const struct_emfield& f : *fields) {
    double lambda_int = 0.0;
    switch (f.s) {
      case PLANE:
        log << "\t\t\t\tcreate PLANE ...";
        lambda_int = init_plane_wave(E, F, N, so, f, is_quiet);
        break;
      case GAUSSIAN:
        log << "\t\t\t\tcreate GAUSSIAN ...";
        lambda_int = init_gauss_wave(E, F, N, so, f, is_quiet);
        break;
      case RANDOM:
        log << "\t\t\t\tcreate RANDOM ...";
        lambda_int = init_random_wave(E, F, N, so, f, is_quiet);
        break;
      default:
        log << "\t\t\033[31mUnknown wave. Please check configuration file.\033[0m" << std::endl;
        diagnostics::fail(so->sysname + ": a wave has an unknown shape");
    }
    if (lambda == 0.0)
      lambda = lambda_int;
    else if (lambda != lambda_int)
      log << "\033[31m[W]\tAttention! Multiple wavelengths specified in configuration file.\033[0m"
          << std::endl;
  }
  warn_of_useless_waves(*so, *fields, lambda);

  const std::int64_t slice = std::int64_t{so->nx == 0 ? 1 : so->nx} * (so->ny == 0 ? 1 : so->ny);
  const std::int64_t count = std::int64_t{so->nx} * so->ny * so->nz;
  for (std::int64_t j = slice; j < count; ++j) {
    E[j] = 0.0;
    if (F != nullptr) F[j] = 0.0;
  }
  return lambda;
}
