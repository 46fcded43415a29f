#include "wpm/batches.h"

#include <algorithm>

#include "diagnostics.h"

namespace wpm {

template <typename T>
AlignedArray<T> allocate_aligned(std::size_t count) {
  auto* memory = static_cast<T*>(fftw_malloc(std::max<std::size_t>(count, 1) * sizeof(T)));
  if (memory == nullptr)
    diagnostics::fail("no memory for a transform, " + std::to_string(count * sizeof(T)) +
                      " bytes; make nx and ny smaller");
  std::uninitialized_fill_n(memory, count, T());
  return AlignedArray<T>(memory);
}
template AlignedArray<double> allocate_aligned(std::size_t count);
template AlignedArray<cpx> allocate_aligned(std::size_t count);
template AlignedArray<std::complex<float>> allocate_aligned(std::size_t count);

TurningPlane::TurningPlane(int written_lines, int read_lines)
    : block_step_(
          static_cast<std::size_t>(groups_of(written_lines) * kBatch * kBatch + 3 * kBatch)),
      blocks_(
          allocate_aligned<cpx>(static_cast<std::size_t>(groups_of(read_lines)) * block_step_)) {}

Workspace::Workspace(int longest)
    : in(allocate_aligned<cpx>(kBatch * line_step(longest))),
      out(allocate_aligned<cpx>(kBatch * line_step(longest))),
      drift_in(allocate_aligned<std::complex<float>>(kBatch * line_step(longest))),
      drift_out(allocate_aligned<std::complex<float>>(kBatch * line_step(longest))) {}

}  // namespace wpm
