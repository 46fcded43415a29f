#include "system/description.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "diagnostics.h"
#include "log.h"
#include "system/conditions.h"
#include "system/overrides.h"
#include "system/parser.h"

bool is_given(const GivenKeys& keys, std::string_view name) {
  for (const GivenKey& key : keys)
    if (key.name == name) return true;
  return false;
}

int line_of(const GivenKeys& keys, std::string_view name) {
  int line = 0;
  for (const GivenKey& key : keys)
    if (key.name == name) line = key.line;
  return line;
}

double vacuum_wavelength(const std::vector<struct_emfield>& waves, double metres) {
  for (const struct_emfield& wave : waves)
    if (wave.lambda * metres != 0) return wave.lambda * metres;
  return 0;
}

namespace {

void make_materials_agree(struct_layer& l, bool permittivity) {
  const auto derive = [permittivity](double& n, double& k, double& eps_r, double& eps_i) {
    const cpx derived = permittivity ? epsToN({eps_r, eps_i}) : nToEps({n, k});
    (permittivity ? n : eps_r) = derived.real();
    (permittivity ? k : eps_i) = derived.imag();
  };
  derive(l.n, l.k, l.eps_r, l.eps_i);
  derive(l.ne, l.ke, l.epse_r, l.epse_i);
}

}  // namespace

void read_description(const std::string& filename, const std::vector<std::string>& overrides,
                      Description& d, bool is_quiet) {
  const Log log(is_quiet);
  struct_sysOptions& so = d.so;
  so.reset();
  so.sysname = filename;

  std::ifstream file(filename);
  if (!file.good()) {
    const std::string reason = std::strerror(errno);
    log << "\033[31m[E] Error! Configuration file could not be opened.\033[0m" << std::endl;
    diagnostics::fail(filename + ": configuration file cannot be opened: " + reason +
                      "; name it with -i FILE");
  }
  parse_lines(file, filename, d, is_quiet);
  apply_overrides(overrides, d, is_quiet);

  for (std::size_t i = 0; i < d.layers.size(); ++i) {
    struct_layer& l = d.layers[i];
    make_materials_agree(l, d.by_permittivity[i]);
    if (l.dataset.empty()) l.dataset = l.t == INDEX_FILE ? "/n" : l.t == SCREEN ? "/E" : "";
  }
  if (so.nz != 0) so.dz = so.z / so.nz;
  if (so.ny != 0) so.dy = so.y / so.ny;
  if (so.nx != 0) so.dx = so.x / so.nx;
  if (so.scl < M || so.scl > PM)
    log << "\033[31m[W] No scale specified in" << filename << ". Default is nm.\033[0m"
        << std::endl;
  so.f = metres_per_unit(so.scl);
  so.updated = true;
  require_sense(d);
}

void parse(const std::string& filename, struct_sysOptions* so, std::vector<struct_layer>* layers,
           std::vector<struct_emfield>* fields, bool is_quiet) {
  Description d;
  read_description(filename, {}, d, is_quiet);
  *so = d.so;
  layers->insert(layers->end(), d.layers.begin(), d.layers.end());
  fields->insert(fields->end(), d.waves.begin(), d.waves.end());
}
