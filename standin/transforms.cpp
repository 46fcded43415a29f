// cuFFT's double-precision transforms over FFTW.
#include <fftw3.h>

#include <cstdlib>
#include <map>
#include <tuple>

#include "cufft.h"
#include "device.h"

namespace standin {
namespace {

struct Plan {
  int nx, ny;
  cufftType type;
  std::map<std::pair<int, bool>, fftw_plan> made;  // by direction and whether it is in place
};

std::map<cufftHandle, Plan> plans;
cufftHandle last_handle = 0;

fftw_complex* as_fftw(cufftDoubleComplex* data) {
  return reinterpret_cast<fftw_complex*>(data);
}

// Plans without measuring and leaves the process's wisdom as it was: FFTW would enter estimated
// plans too, and the wisdom file is the CPU path's.
fftw_plan make_plan(const Plan& plan, cufftDoubleComplex* input, cufftDoubleComplex* output,
                    int direction) {
  char* wisdom = fftw_export_wisdom_to_string();
  fftw_plan made = fftw_plan_dft_2d(plan.nx, plan.ny, as_fftw(input), as_fftw(output), direction,
                                    FFTW_ESTIMATE | FFTW_UNALIGNED);
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
  const std::lock_guard lock(device().mutex);
  if (nx < 1 || ny < 1) return CUFFT_INVALID_SIZE;
  if (type != CUFFT_C2C && type != CUFFT_Z2Z) return CUFFT_INVALID_TYPE;
  *plan = ++standin::last_handle;
  plans.emplace(*plan, Plan{nx, ny, type, {}});
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

  const std::size_t bytes =
      sizeof(*input) * static_cast<std::size_t>(plan.nx) * static_cast<std::size_t>(plan.ny);
  const standin::Memory& memory = device().memory;
  if (memory.find(input, bytes) == nullptr || memory.find(output, bytes) == nullptr) {
    device().errors.fault(cudaErrorIllegalAddress);
    return CUFFT_EXEC_FAILED;
  }
  const standin::Access access(memory, {input, output});
  fftw_plan& made = plan.made[{direction, input == output}];
  if (made == nullptr) made = standin::make_plan(plan, input, output, direction);
  fftw_execute_dft(made, standin::as_fftw(input), standin::as_fftw(output));
  return CUFFT_SUCCESS;
}

cufftResult cufftDestroy(cufftHandle handle) {
  const std::lock_guard lock(device().mutex);
  const auto found = plans.find(handle);
  if (found == plans.end()) return CUFFT_INVALID_PLAN;
  for (const auto& [key, made] : found->second.made) fftw_destroy_plan(made);
  plans.erase(found);
  return CUFFT_SUCCESS;
}
