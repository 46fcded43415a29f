#include "main/memory.h"

#include <algorithm>

#include "diagnostics.h"
#include "kernel/kernel.h"
#include "main/run.h"
#include "main/streaming.h"
#include "ranks/ranks.h"
#include "wpm/survey.h"
#include "wpm/transfer.h"

namespace {

// Bytes of one double and one complex number for each sample.
constexpr double kReal = sizeof(double), kComplex = sizeof(cpx);
constexpr double kTransferSample = (kComplex + kReal) / 4;  // one value for both signs of kx and ky

// The planes of transforms that are at work together.
double batch_bytes(double plane, double pairs, double limit, double most) {
  const double planes = std::clamp(limit / (kComplex * plane), 1.0, most);
  return std::min(planes, pairs) * kComplex * plane;
}

// Steps on the CPU. share: that of this rank.
double cpu_bytes(const Run& run, const IndexSurvey& found, double plane, double share) {
  double bytes = plane * kComplex + 72 * found.most_waves;  // the direct sum's
  if (ranks::count() > 1) bytes += plane * kComplex;        // the whole slice on every rank
  if (run.options.is_fast) {
    if (found.transformed_steps >= run.grid.nz - 1) bytes = 0;
    bytes += share * 34 * plane;  // spectrum and its power
    if (found.transformed_steps > 0)
      bytes += share * batch_bytes(plane, static_cast<double>(found.most_pairs), 64e6, 8) +
               std::min(static_cast<double>(wpm::kTransferBytes),
                        share * found.transfers * kTransferSample * plane);
  }
  return bytes;
}

// Steps on the device, which takes memory of this machine if it is the stand-in.
double device_bytes(const Run& run, const IndexSurvey& found, double plane) {
  if (!is_host_standin()) return 2 * kComplex * plane;
  constexpr double kLimit = 256 << 20;
  const auto pairs = static_cast<double>(found.most_pairs);
  double bytes = 50 * plane;
  if (run.options.is_fast)
    bytes += 70 * plane + batch_bytes(plane, 1.5 * pairs, kLimit, pairs) +
             std::min(kLimit, pairs * kTransferSample * plane);
  return bytes;
}

}  // namespace

double peak_bytes(const Run& run, const IndexSurvey& found) {
  constexpr double kProgram = 12.5e6;
  constexpr double kFields = 2 * kComplex + kReal;  // E, N and F
  const auto plane = static_cast<double>(run.grid.plane());
  const auto volume = static_cast<double>(run.grid.voxels());
  const double share = 1.0 / ranks::count();
  double bytes = kProgram;
  for (const struct_layer& l : run.description.layers) {
    if (l.t == INDEX_FILE) bytes += 72 * plane;  // slices of a file sampled as the run
    if (l.t == SCREEN) bytes += share * kComplex * plane;
  }
  bytes += static_cast<double>(run.description.monitors.size()) * kComplex * plane;
  if (run.is_streamed)
    bytes += plane * (kFields + kComplex);  // slice 0, and a slice on its way to a file
  else
    bytes += volume * kFields + (run.options.is_gpu ? volume * kComplex : 0);

  double steps = 0;
  if (run.options.is_cpu) steps = cpu_bytes(run, found, plane, share);
  if (run.options.is_gpu) {
    const bool is_stepped = needs_march(run) && device_can_step(run.options);
    const double on_device = is_host_standin() ? volume * kFields : 0;
    steps = std::max(steps,
                     is_stepped ? device_bytes(run, found, plane) : volume * kComplex + on_device);
  }
  if (steps > 0 && run.is_streamed)
    steps += share * plane * (2 * kFields + kComplex + kReal);  // two slices, and the entry's copy
  return bytes + steps;
}

template <typename T>
HostArray<T>::HostArray(std::size_t count, const char* name)
    : data_(static_cast<T*>(std::calloc(count, sizeof(T)))) {
  check(data_.get(), name);
  if (data_ == nullptr && count > 0)
    diagnostics::fail(std::string("no memory for ") + name + ", " +
                      std::to_string(count * sizeof(T)) +
                      " bytes; make nx, ny or nz smaller, or hold slices instead of volumes with "
                      "--stream or --fast");
}

template class HostArray<cpx>;
template class HostArray<double>;
template class HostArray<cufftDoubleComplex>;
