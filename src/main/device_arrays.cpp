#include "main/device_arrays.h"

#include <iostream>

#include "diagnostics.h"
#include "io/io.h"

namespace {

std::size_t length(int n) {
  return static_cast<std::size_t>(n);
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
DeviceArrays::DeviceArrays(const Grid& grid)
    : E(grid.voxels()),
      F(grid.voxels()),
      X(length(grid.nx)),
      Y(length(grid.ny)),
      N(grid.voxels()),
      KX(length(grid.nx)),
      KY(length(grid.ny)) {
  if (E.data() != nullptr && F.data() != nullptr && N.data() != nullptr && KX.data() != nullptr &&
      X.data() != nullptr && KY.data() != nullptr && Y.data() != nullptr)
    return;
  std::cout << "\033[31mError\033[0m - CPU memory alloc" << std::endl;
  const std::pair<cudaError_t, const char*> statuses[] = {
      {E.status(), "E"},   {F.status(), "F"}, {N.status(), "N"}, {KX.status(), "KX"},
      {KY.status(), "KY"}, {X.status(), "X"}, {Y.status(), "Y"},
  };
  for (const auto& [status, name] : statuses)
    if (status != cudaSuccess)
      std::cout << "\t\tError " << status << " on " << name
                << " alloc : " << cudaGetErrorString(status) << std::endl;
  diagnostics::fail(
      "not all arrays could be had on the device; give every size of the grid at least 1 and make "
      "it smaller if the device is full, hold slices instead of volumes with --stream or --fast, "
      "or run on the CPU with -p alone");
}

void DeviceArrays::upload(const Run& run, const HostCopies& copies) const {
  const Grid& grid = run.grid;
  E.upload(run.h_E.data(), grid.voxels());
  F.upload(run.F.data(), grid.voxels());
  N.upload(copies.N.data(), grid.voxels());
  KX.upload(copies.KX.data(), length(grid.nx));
  KY.upload(copies.KY.data(), length(grid.ny));
  X.upload(run.axes.X.data(), length(grid.nx));
  Y.upload(run.axes.Y.data(), length(grid.ny));
}

void DeviceArrays::download(Run& run) const {
  E.download(run.h_E.data(), run.grid.voxels());
  F.download(run.F.data(), run.grid.voxels());
}
