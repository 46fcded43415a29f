// The device copies of a run's arrays, and the staging between the two formats.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include "kernel/device_array.h"
#include "main/run.h"

// Host copies in the device's format.
struct HostCopies {
  HostArray<cufftDoubleComplex> N, KX, KY;  // E is the run's h_E: it brings the result back
};

// Fills run.h_E, which is allocated, and makes the others.
HostCopies converted(Run& run);

struct DeviceArrays {
  // Allocates all; what could not be had is reported on the log, quiet or not, and throws Error.
  explicit DeviceArrays(const Grid& grid);

  // What cannot be copied throws Error.
  void upload(const Run& run, const HostCopies& copies);
  void download(Run& run) const;

  device::Array<cufftDoubleComplex> E;
  device::Array<double> F, X, Y;
  device::Array<cufftDoubleComplex> N, KX, KY;
};
