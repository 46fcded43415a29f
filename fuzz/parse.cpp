// A configuration file, parsed and laid out as a run does up to its incident field. Grids of more
// than 8 x 8 x 8 samples end behind the parser.
#include <cstdlib>
#include <vector>

#include "constants.h"
#include "diagnostics.h"
#include "fuzz.h"
#include "wpm/wpm.h"

namespace {

bool is_small(int size) {
  return size >= 0 && size <= 8;
}

// A size of 0 is worked on as 1.
std::size_t samples(int size) {
  return size == 0 ? 1 : static_cast<std::size_t>(size);
}

void lay_out(struct_sysOptions& so, const std::vector<struct_layer>& layers,
             const std::vector<struct_emfield>& waves) {
  std::vector<double> X(samples(so.nx)), Y(samples(so.ny));
  std::vector<cpx> KX(samples(so.nx)), KY(samples(so.ny));
  init_X(X.data(), so.nx, so.dx * so.f);
  init_X(Y.data(), so.ny, so.dy * so.f);
  init_F(KX.data(), so.nx, kTwoPi / (so.nx * so.dx * so.f));
  init_F(KY.data(), so.ny, kTwoPi / (so.ny * so.dy * so.f));
  // Of exact size, so that the address sanitizer sees a slip.
  const std::size_t voxels = samples(so.nx) * samples(so.ny) * samples(so.nz);
  std::vector<cpx> N(voxels), E(voxels);
  std::vector<double> F(voxels);
  init_N(N.data(), &so, &layers, false);
  init_0(F.data(), &so, false);
  init_E(E.data(), F.data(), N.data(), &so, &waves, false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const InputFile file;
  file.write(data, size);
  const Silence silence;
  try {
    struct_sysOptions so;
    std::vector<struct_layer> layers;
    std::vector<struct_emfield> waves;
    parse(file.name(), &so, &layers, &waves, false);
    if (is_small(so.nx) && is_small(so.ny) && is_small(so.nz)) lay_out(so, layers, waves);
  } catch (const zerith::Error&) {
  }
  return 0;
}
