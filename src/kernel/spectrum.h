// What the slice loops of the device share.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include <cmath>
#include <cstddef>

#include "kernel/report.h"

namespace device {

// Transform plan and spectrum buffer of a call; both are left to the end of the process. What fails
// is said and leaves the spectrum at zero, which adds nothing to any slice.
struct Spectrum {
  cufftHandle plan = 0;
  cufftDoubleComplex* S = nullptr;

  // nx is the slow extent, as on the CPU: a plane is read as nx rows of ny samples.
  Spectrum(int ny, int nx, cufftType type) {
    const int plane = nx * ny;
    report_.is_good(cufftPlan2d(&plan, nx, ny, type), "plan the transform of a slice");
    const std::size_t bytes = static_cast<std::size_t>(plane) * sizeof(*S);
    const char* making_room = "make room for the spectrum of a slice";
    if (!report_.is_good(cudaMalloc(reinterpret_cast<void**>(&S), bytes), making_room)) S = nullptr;
    if (S != nullptr) report_.is_good(cudaMemset(S, 0, bytes), making_room);
  }

  [[nodiscard]] bool has_room() const { return S != nullptr; }

  void transform(cufftDoubleComplex* slice) {
    report_.is_good(cufftExecZ2Z(plan, slice, S, CUFFT_FORWARD), "transform a slice");
  }

 private:
  Report report_;
};

// Blocks that cover count samples. A block of no or negative extent gives a number of blocks that
// the launch refuses, as it refuses the block.
inline unsigned blocks_for(int count, int blockSize) {
  if (blockSize == 0) return 0;
  return static_cast<unsigned>(static_cast<int>(std::ceil(static_cast<double>(count) / blockSize)));
}

}  // namespace device
