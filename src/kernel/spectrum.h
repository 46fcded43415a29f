// What the slice loops of the device share.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include <cmath>
#include <cstddef>

namespace device {

// Transform plan and spectrum buffer of a call; both are left to the end of the process.
struct Spectrum {
  cufftHandle plan = 0;
  cufftDoubleComplex* S = nullptr;

  // nx is the slow extent, as on the CPU: a plane is read as nx rows of ny samples.
  Spectrum(int ny, int nx, cufftType type) {
    const int plane = nx * ny;
    cufftPlan2d(&plan, nx, ny, type);
    cudaMalloc(&S, static_cast<std::size_t>(plane) * sizeof(*S));
  }

  void transform(cufftDoubleComplex* slice) const { cufftExecZ2Z(plan, slice, S, CUFFT_FORWARD); }
};

// Blocks that cover count samples. A block of no or negative extent gives a number of blocks that
// the launch refuses, as it refuses the block.
inline unsigned blocks_for(int count, int blockSize) {
  if (blockSize == 0) return 0;
  return static_cast<unsigned>(static_cast<int>(std::ceil(static_cast<double>(count) / blockSize)));
}

}  // namespace device
