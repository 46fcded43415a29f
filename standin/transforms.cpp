// cuFFT's double-precision transforms over FFTW.
#include <fftw3.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <utility>

#include "cufft.h"
#include "device.h"

namespace standin {
namespace {

struct DestroyPlan {
  void operator()(fftw_plan plan) const { fftw_destroy_plan(plan); }
};
using FftwPlan = std::unique_ptr<fftw_plan_s, DestroyPlan>;

struct Plan {
  int nx, ny, batch;
  cufftType type;
  std::map<std::pair<int, bool>, FftwPlan> made;  // by direction and whether it is in place
};

std::map<cufftHandle, Plan> plans;
cufftHandle last_handle = 0;

fftw_complex* as_fftw(cufftDoubleComplex* data) {
  return reinterpret_cast<fftw_complex*>(data);
}

// Plans without measuring and leaves the process's wisdom as it was: FFTW would enter estimated
// plans too, and the wisdom file is the CPU path's.
FftwPlan make_plan(const Plan& plan, cufftDoubleComplex* input, cufftDoubleComplex* output,
                   int direction) {
  char* wisdom = fftw_export_wisdom_to_string();
  const int extents[] = {plan.nx, plan.ny};
  const int plane = plan.nx * plan.ny;
  FftwPlan made(fftw_plan_many_dft(2, extents, plan.batch, as_fftw(input), nullptr, 1, plane,
                                   as_fftw(output), nullptr, 1, plane, direction,
                                   FFTW_ESTIMATE | FFTW_UNALIGNED));
  if (wisdom != nullptr) {
    fftw_forget_wisdom();
    fftw_import_wisdom_from_string(wisdom);
    std::free(wisdom);  // NOLINT: FFTW gives it from malloc
  }
  return made;
}

}  // namespace
}  // namespace standin

using standin::device;
using standin::Plan;
using standin::plans;

cufftResult cufftPlan2d(cufftHandle* plan, int nx, int ny, cufftType type) {
  int extents[] = {nx, ny};
  return cufftPlanMany(plan, 2, extents, nullptr, 1, nx * ny, nullptr, 1, nx * ny, type, 1);
}

cufftResult cufftPlanMany(cufftHandle* plan, int rank, int* extents, int* inembed, int istride,
                          int idist, int* onembed, int ostride, int odist, cufftType type,
                          int batch) {
  const std::lock_guard lock(device().mutex);
  if (rank != 2 || extents[0] < 1 || extents[1] < 1 || batch < 1) return CUFFT_INVALID_SIZE;
  if (type != CUFFT_C2C && type != CUFFT_Z2Z) return CUFFT_INVALID_TYPE;
  const int plane = extents[0] * extents[1];
  const bool is_contiguous = inembed == nullptr && onembed == nullptr && istride == 1 &&
                             ostride == 1 && idist == plane && odist == plane;
  if (!is_contiguous) return CUFFT_INVALID_VALUE;
  *plan = ++standin::last_handle;
  plans.emplace(*plan, Plan{extents[0], extents[1], batch, type, {}});
  return CUFFT_SUCCESS;
}

cufftResult cufftExecZ2Z(cufftHandle handle, cufftDoubleComplex* input, cufftDoubleComplex* output,
                         int direction) {
  const std::lock_guard lock(device().mutex);
  const auto found = plans.find(handle);
  if (found == plans.end()) return CUFFT_INVALID_PLAN;
  Plan& plan = found->second;
  if (plan.type != CUFFT_Z2Z) return CUFFT_INVALID_TYPE;
  if (direction != CUFFT_FORWARD && direction != CUFFT_INVERSE) return CUFFT_INVALID_VALUE;
  if (device().errors.is_faulted()) return CUFFT_EXEC_FAILED;

  const std::size_t bytes = sizeof(*input) * static_cast<std::size_t>(plan.nx) *
                            static_cast<std::size_t>(plan.ny) *
                            static_cast<std::size_t>(plan.batch);
  const standin::Memory& memory = device().memory;
  if (memory.find(input, bytes) == nullptr || memory.find(output, bytes) == nullptr) {
    device().errors.fault(cudaErrorIllegalAddress);
    return CUFFT_EXEC_FAILED;
  }
  const standin::Access access(memory, {input, output});
  standin::FftwPlan& made = plan.made[{direction, input == output}];
  if (made == nullptr) made = standin::make_plan(plan, input, output, direction);
  fftw_execute_dft(made.get(), standin::as_fftw(input), standin::as_fftw(output));
  return CUFFT_SUCCESS;
}

cufftResult cufftDestroy(cufftHandle handle) {
  const std::lock_guard lock(device().mutex);
  return plans.erase(handle) == 1 ? CUFFT_SUCCESS : CUFFT_INVALID_PLAN;
}
