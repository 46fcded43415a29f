#include <cstdio>

#include "measure.h"
#include "support/plain_nest.h"
#include "wpm/threads.h"

namespace bench {

void reference() {
  std::printf("reference propagator against the plain nest of loops, per inner step\n");
  std::printf("%8s %8s %10s %10s %8s\n", "side", "threads", "nest ns", "zerith ns", "ratio");
  for (const int side : {32, 48, 64}) {
    Scene plain = growing_guide(side, 2);
    Scene economic = plain;
    plain.propagate(plain_nest_3D);
    economic.propagate();
    require_same(plain, economic, 0.0, "reference");
    const double steps = static_cast<double>(side) * side * side * side;
    for (const int threads : {1, 2}) {
      wpm::set_threads(threads);
      const Pair pair =
          compare([&] { plain.propagate(plain_nest_3D); }, [&] { economic.propagate(); }, 7);
      wpm::set_threads(1);
      std::printf("%8d %8d %10.1f %10.1f %8.2f\n", side, threads, pair.a / steps * 1e9,
                  pair.b / steps * 1e9, pair.ratio);
    }
  }
}

}  // namespace bench
