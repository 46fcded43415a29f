// cuFFT's complex transforms over FFTW.
#include <fftw3.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <utility>

#include "cufft.h"
#include "device.h"

namespace standin {
namespace {

// FFTW in one precision or the other.
struct Double {
  using Sample = cufftDoubleComplex;
  using Plan = fftw_plan;
  static constexpr cufftType kType = CUFFT_Z2Z;
  static constexpr auto destroy = fftw_destroy_plan;
  static constexpr auto execute = fftw_execute_dft;
  static fftw_complex* raw(Sample* data) { return reinterpret_cast<fftw_complex*>(data); }

  // FFTW enters estimated plans into the process's wisdom, and the wisdom file is the CPU path's:
  // it is left as it was. The threads layer comes first, as it does there: begun later, it would
  // make the planner another one, whose wisdom the CPU path cannot use.
  template <class Make>
  static Plan plan(Make make) {
    fftw_init_threads();
    fftw_plan_with_nthreads(1);
    char* wisdom = fftw_export_wisdom_to_string();
    const Plan made = make(fftw_plan_many_dft);
    if (wisdom != nullptr) {
      fftw_forget_wisdom();
      fftw_import_wisdom_from_string(wisdom);
      std::free(wisdom);  // NOLINT: FFTW gives it from malloc
    }
    return made;
  }
};

struct Single {
  using Sample = cufftComplex;
  using Plan = fftwf_plan;
  static constexpr cufftType kType = CUFFT_C2C;
  static constexpr auto destroy = fftwf_destroy_plan;
  static constexpr auto execute = fftwf_execute_dft;
  static fftwf_complex* raw(Sample* data) { return reinterpret_cast<fftwf_complex*>(data); }

  template <class Make>
  static Plan plan(Make make) {
    return make(fftwf_plan_many_dft);
  }
};

struct Plan {
  int nx, ny, batch;
  cufftType type;
  // By direction and whether it is in place; FFTW's plans are made when they are first needed.
  std::map<std::pair<int, bool>, std::shared_ptr<void>> made;

  [[nodiscard]] std::size_t samples() const {
    return static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny) *
           static_cast<std::size_t>(batch);
  }

  // Without measuring, which would overwrite the data.
  template <class Precision, class Sample>
  typename Precision::Plan get(Sample* input, Sample* output, int direction) {
    std::shared_ptr<void>& place = made[{direction, input == output}];
    if (place == nullptr) {
      const int extents[] = {nx, ny};
      const auto make = [&](auto plan_many) {
        return plan_many(2, extents, batch, Precision::raw(input), nullptr, 1, nx * ny,
                         Precision::raw(output), nullptr, 1, nx * ny, direction,
                         FFTW_ESTIMATE | FFTW_UNALIGNED);
      };
      place = {Precision::plan(make), [](auto* plan) { Precision::destroy(plan); }};
    }
    return static_cast<typename Precision::Plan>(place.get());
  }
};

std::map<cufftHandle, Plan> plans;
cufftHandle last_handle = 0;

template <class Precision>
cufftResult execute(cufftHandle handle, typename Precision::Sample* input,
                    typename Precision::Sample* output, int direction) {
  const std::lock_guard lock(device().mutex);
  const auto found = plans.find(handle);
  if (found == plans.end()) return CUFFT_INVALID_PLAN;
  Plan& plan = found->second;
  if (plan.type != Precision::kType) return CUFFT_INVALID_TYPE;
  if (direction != CUFFT_FORWARD && direction != CUFFT_INVERSE) return CUFFT_INVALID_VALUE;
  if (device().errors.is_faulted()) return CUFFT_EXEC_FAILED;
  if (!device().calls.take(Call::kTransform)) return CUFFT_EXEC_FAILED;

  const std::size_t bytes = sizeof(*input) * plan.samples();
  const Memory& memory = device().memory;
  if (memory.find(input, bytes) == nullptr || memory.find(output, bytes) == nullptr) {
    device().errors.fault(cudaErrorIllegalAddress);
    return CUFFT_EXEC_FAILED;
  }
  const Access access(memory, {input, output});
  Precision::execute(plan.get<Precision>(input, output, direction), Precision::raw(input),
                     Precision::raw(output));
  return CUFFT_SUCCESS;
}

}  // namespace
}  // namespace standin

using standin::device;
using standin::plans;

cufftResult cufftPlan2d(cufftHandle* plan, int nx, int ny, cufftType type) {
  int extents[] = {nx, ny};
  return cufftPlanMany(plan, 2, extents, nullptr, 1, nx * ny, nullptr, 1, nx * ny, type, 1);
}

cufftResult cufftPlanMany(cufftHandle* plan, int rank, int* extents, int* inembed, int istride,
                          int idist, int* onembed, int ostride, int odist, cufftType type,
                          int batch) {
  const std::lock_guard lock(device().mutex);
  if (!device().calls.take(standin::Call::kPlan)) return CUFFT_ALLOC_FAILED;
  if (rank != 2 || extents[0] < 1 || extents[1] < 1 || batch < 1) return CUFFT_INVALID_SIZE;
  if (type != CUFFT_C2C && type != CUFFT_Z2Z) return CUFFT_INVALID_TYPE;
  const int plane = extents[0] * extents[1];
  const bool is_contiguous = inembed == nullptr && onembed == nullptr && istride == 1 &&
                             ostride == 1 && idist == plane && odist == plane;
  if (!is_contiguous) return CUFFT_INVALID_VALUE;
  *plan = ++standin::last_handle;
  plans.emplace(*plan, standin::Plan{extents[0], extents[1], batch, type, {}});
  return CUFFT_SUCCESS;
}

cufftResult cufftExecZ2Z(cufftHandle plan, cufftDoubleComplex* input, cufftDoubleComplex* output,
                         int direction) {
  return standin::execute<standin::Double>(plan, input, output, direction);
}

cufftResult cufftExecC2C(cufftHandle plan, cufftComplex* input, cufftComplex* output,
                         int direction) {
  return standin::execute<standin::Single>(plan, input, output, direction);
}

cufftResult cufftDestroy(cufftHandle handle) {
  const std::lock_guard lock(device().mutex);
  return plans.erase(handle) == 1 ? CUFFT_SUCCESS : CUFFT_INVALID_PLAN;
}
