#include "wpm/source.h"

#include <cmath>

namespace waves {

Source::Source(const struct_sysOptions& so, const struct_emfield& f)
    : Frame(so), cx(nx / 2), cy(ny / 2), lambda(f.lambda * metres) {
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

}  // namespace waves
