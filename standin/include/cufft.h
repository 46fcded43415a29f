// cuFFT as far as our device code uses it: two-dimensional complex transforms.
#pragma once

#include "cuComplex.h"

typedef int cufftHandle;
typedef cuDoubleComplex cufftDoubleComplex;
typedef float2 cufftComplex;

enum cufftType { CUFFT_C2C = 0x29, CUFFT_Z2Z = 0x69 };

enum cufftResult {
  CUFFT_SUCCESS = 0,
  CUFFT_INVALID_PLAN = 1,
  CUFFT_ALLOC_FAILED = 2,
  CUFFT_INVALID_TYPE = 3,
  CUFFT_INVALID_VALUE = 4,
  CUFFT_EXEC_FAILED = 6,
  CUFFT_INVALID_SIZE = 8
};

inline constexpr int CUFFT_FORWARD = -1;
inline constexpr int CUFFT_INVERSE = 1;

// A transform of nx rows of ny contiguous samples; in single precision with CUFFT_C2C.
cufftResult cufftPlan2d(cufftHandle* plan, int nx, int ny, cufftType type);

// batch such transforms, one behind the other: rank is 2, extents are slowest first, and the
// layouts are contiguous: null, or 1 and the product of the extents.
cufftResult cufftPlanMany(cufftHandle* plan, int rank, int* extents, int* inembed, int istride,
                          int idist, int* onembed, int ostride, int odist, cufftType type,
                          int batch);

// The unnormalised transform of input [batch][nx][ny] into output, in place if they are the same.
// A plan of another type than the call's is refused and output stays as it is. Memory that is not
// the device's is an illegal address, as in a kernel.
cufftResult cufftExecZ2Z(cufftHandle plan, cufftDoubleComplex* input, cufftDoubleComplex* output,
                         int direction);
cufftResult cufftExecC2C(cufftHandle plan, cufftComplex* input, cufftComplex* output,
                         int direction);

cufftResult cufftDestroy(cufftHandle plan);
