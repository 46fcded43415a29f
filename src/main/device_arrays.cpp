#include "main/device_arrays.h"

#include <iostream>

#include "diagnostics.h"
#include "io/io.h"

namespace {

std::size_t length(int n) {
  return static_cast<std::size_t>(n);
}

void require_copied(cudaError_t status) {
  if (status != cudaSuccess)
    diagnostics::fail(std::string("the device could not copy an array: ") +
                      cudaGetErrorString(status) + "; run on the CPU with -p alone");
}

}  // namespace

HostCopies converted(Run& run) {
  const Grid& grid = run.grid;
  const auto voxels = static_cast<int>(grid.voxels());
  HostCopies copies;
  copies.N = HostArray<cufftDoubleComplex>(grid.voxels(), "h_N");
  copies.KX = HostArray<cufftDoubleComplex>(length(grid.nx), "h_KX");
  copies.KY = HostArray<cufftDoubleComplex>(length(grid.ny), "h_KY");
  convert(run.E.data(), run.h_E.data(), voxels);
  convert(run.N.data(), copies.N.data(), voxels);
  convert(run.axes.KX.data(), copies.KX.data(), grid.nx);
  convert(run.axes.KY.data(), copies.KY.data(), grid.ny);
  return copies;
}

// The message says CPU although the device ran out; it is the log's text.
DeviceArrays::DeviceArrays(const Grid& grid) {
  struct Allocation {
    const char* name;
    cudaError_t status;
  };
  const Allocation e = {"E", E.allocate(grid.voxels())}, f = {"F", F.allocate(grid.voxels())};
  const Allocation x = {"X", X.allocate(length(grid.nx))}, y = {"Y", Y.allocate(length(grid.ny))};
  const Allocation n = {"N", N.allocate(grid.voxels())};
  const Allocation kx = {"KX", KX.allocate(length(grid.nx))};
  const Allocation ky = {"KY", KY.allocate(length(grid.ny))};
  if (E.data() != nullptr && F.data() != nullptr && N.data() != nullptr && KX.data() != nullptr &&
      X.data() != nullptr && KY.data() != nullptr && Y.data() != nullptr)
    return;
  std::cout << "\033[31mError\033[0m - CPU memory alloc" << std::endl;
  for (const auto& [name, status] : {e, f, n, kx, ky, x, y})
    if (status != cudaSuccess)
      std::cout << "\t\tError " << status << " on " << name
                << " alloc : " << cudaGetErrorString(status) << std::endl;
  diagnostics::fail(
      "not all arrays could be had on the device; give every size of the grid at least 1 and make "
      "it smaller if the device is full, hold slices instead of volumes with --stream or --fast, "
      "or run on the CPU with -p alone");
}

void DeviceArrays::upload(const Run& run, const HostCopies& copies) {
  const Grid& grid = run.grid;
  require_copied(E.upload(run.h_E.data(), grid.voxels()));
  require_copied(F.upload(run.F.data(), grid.voxels()));
  require_copied(N.upload(copies.N.data(), grid.voxels()));
  require_copied(KX.upload(copies.KX.data(), length(grid.nx)));
  require_copied(KY.upload(copies.KY.data(), length(grid.ny)));
  require_copied(X.upload(run.axes.X.data(), length(grid.nx)));
  require_copied(Y.upload(run.axes.Y.data(), length(grid.ny)));
}

void DeviceArrays::download(Run& run) const {
  require_copied(E.download(run.h_E.data()));
  require_copied(F.download(run.F.data()));
}
