// What the slice loops of the device share.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include <cmath>
#include <cstddef>

#include "diagnostics.h"
#include "kernel/status.h"

namespace device {

// Transform plan and spectrum buffer of a call; both are left to the end of the process. What fails
// is an error message and leaves the spectrum at zero, which adds nothing to any slice.
struct Spectrum {
  cufftHandle plan = 0;
  cufftDoubleComplex* S = nullptr;

  // nx is the slow extent, as on the CPU: a plane is read as nx rows of ny samples.
  Spectrum(int ny, int nx, cufftType type) {
    const int plane = nx * ny;
    succeeds(cufftPlan2d(&plan, nx, ny, type), "plan the transform of a slice");
    const std::size_t bytes = static_cast<std::size_t>(plane) * sizeof(*S);
    const char* making_room = "make room for the spectrum of a slice";
    if (!succeeds(cudaMalloc(reinterpret_cast<void**>(&S), bytes), making_room)) S = nullptr;
    if (S != nullptr) succeeds(cudaMemset(S, 0, bytes), making_room);
  }

  [[nodiscard]] bool has_room() const { return S != nullptr; }

  void transform(cufftDoubleComplex* slice) {
    succeeds(cufftExecZ2Z(plan, slice, S, CUFFT_FORWARD), "transform a slice");
  }

 private:
  // The first failure alone is reported: the others follow from it.
  template <typename Result>
  bool succeeds(Result result, const char* doing) {
    const bool was_good = status_.is_good();
    status_.take(result, doing);
    if (was_good && !status_.is_good()) diagnostics::error(status_.failure()->text);
    return result == Result{};
  }

  Status status_;
};

// Blocks that cover count samples. A block of no or negative extent gives a number of blocks that
// the launch refuses, as it refuses the block.
inline unsigned blocks_for(int count, int blockSize) {
  if (blockSize == 0) return 0;
  return static_cast<unsigned>(static_cast<int>(std::ceil(static_cast<double>(count) / blockSize)));
}

}  // namespace device
