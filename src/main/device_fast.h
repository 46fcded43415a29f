// The fast propagation on the device, fed with what the host knows of the scene.
#pragma once

#include <cuda_runtime.h>

#include "main/stages.h"

// Whether the run's axes are ones that transforms serve.
bool transforms_serve(const Run& run);

// As naiveKernelWrapper_3D with the run's scalars, by transforms; device pointers.
void propagate_fast_on_device(const Run& run, double2* E, double* F, double2* N, double2* KX,
                              double* X, double2* KY, double* Y);
