#include "kernel/pair_planes.h"

#include <algorithm>
#include <cmath>

#include "kernel/bins.cuh"

namespace device {
namespace {

constexpr int kLargestBatch = 16;
constexpr double kAxesTwoPi = 6.2831853;  // the value that frequencies are made with

// Of a launch whose threads are laid out for ny by nx in square blocks and read as nx by ny.
int covered(int n, int other, int blockSize) {
  return static_cast<int>(std::min<long long>(
      n, (static_cast<long long>(other) + blockSize - 1) / blockSize * blockSize));
}

}  // namespace

Plane::Plane(int nx_, int ny_, int blockSize)
    : nx(nx_),
      ny(ny_),
      covered_x(covered(nx_, ny_, blockSize)),
      covered_y(covered(ny_, nx_, blockSize)),
      drift_x((kAxesTwoPi - 2.0 * kPi) / nx_),
      drift_y((kAxesTwoPi - 2.0 * kPi) / ny_) {}

std::size_t Plane::samples() const {
  return static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
}

std::size_t Plane::folds() const {
  return static_cast<std::size_t>(folds_of(nx)) * static_cast<std::size_t>(folds_of(ny));
}

dim3 blocks_over(int columns, int rows, int layers) {
  return {static_cast<unsigned>((columns + kBlockX - 1) / kBlockX),
          static_cast<unsigned>((rows + kBlockY - 1) / kBlockY), static_cast<unsigned>(layers)};
}

dim3 blocks_over_line(int count, int layers) {
  return {(static_cast<unsigned>(count) + kLineBlock - 1) / kLineBlock,
          static_cast<unsigned>(layers)};
}

int strands_of(std::size_t terms) {
  return static_cast<int>((terms + kRun - 1) / kRun);
}

PairPlanes::PairPlanes(const Plane& plane, const ModeRules& rules, const StepperOptions& options,
                       Status& status)
    : plane_(plane),
      rules_(rules),
      options_(options),
      status_(status),
      largest_batch_(static_cast<int>(std::clamp<std::size_t>(
          options.plane_bytes / (plane.samples() * (sizeof(double2) + 2 * sizeof(float2))), 1,
          kLargestBatch))) {
  const char* doing = "make room for the spectrum of a slice";
  status_.reserve(f_, plane_.samples(), doing);
  status_.reserve(power_, plane_.samples(), doing);
}

PairPlanes::~PairPlanes() {
  for (const auto& [batch, plans] : plans_)
    for (const cufftHandle plan : {plans.field, plans.drift})
      if (plan != 0) cufftDestroy(plan);
}

void PairPlanes::set_pairs(int count, const IndexPair* constants, const double* kx,
                           const double* ky, Wild* wild, int pairs_number) {
  count_ = count;
  constants_ = constants;
  kx_ = kx;
  ky_ = ky;
  wild_ = wild;
  pairs_number_ = pairs_number;
  batch_ = std::min(count, largest_batch_);
  const std::size_t transfer_bytes = plane_.folds() * (sizeof(double2) + sizeof(double));
  const auto kept = static_cast<std::size_t>(count);
  has_all_transfers_ = count <= batch_ || kept <= options_.transfer_bytes / transfer_bytes;
  const auto batch = static_cast<std::size_t>(batch_);
  const std::size_t slots = has_all_transfers_ ? kept : batch;

  const char* doing = "make room for the planes of pairs of indices";
  status_.reserve(field_, slots * plane_.folds(), doing);
  status_.reserve(flux_, slots * plane_.folds(), doing);
  status_.reserve(A_, batch * plane_.samples(), doing);
  status_.reserve(drift_, batch * 2 * plane_.samples(), doing);
  const auto strands = static_cast<std::size_t>(strands_of(plane_.samples()));
  for (Array<double>& level : strands_) status_.reserve(level, batch * strands, doing);
  if (batch_ > 0) plan(batch_);
  if (batch_ > 0 && count % batch_ != 0) plan(count % batch_);
  if (has_all_transfers_) work_out_transfers(0, count);
}

void PairPlanes::plan(int batch) {
  if (!status_.is_good() || plans_.count(batch) != 0) return;
  Plans& plans = plans_[batch];
  int extents[] = {plane_.ny, plane_.nx};
  const int plane = plane_.nx * plane_.ny;
  const char* doing = "plan the transforms of pairs of indices";
  status_.take(cufftPlanMany(&plans.field, 2, extents, nullptr, 1, plane, nullptr, 1, plane,
                             CUFFT_Z2Z, batch),
               doing);
  if (status_.is_good())
    status_.take(cufftPlanMany(&plans.drift, 2, extents, nullptr, 1, plane, nullptr, 1, plane,
                               CUFFT_C2C, 2 * batch),
                 doing);
}

// Those of count pairs from first on, into the first slots.
void PairPlanes::work_out_transfers(int first, int count) {
  // The number of layers of a grid is limited.
  constexpr int kLayers = 32768;
  for (int done = 0; done < count; done += kLayers) {
    const int layers = std::min(kLayers, count - done);
    const std::size_t slot = static_cast<std::size_t>(done) * plane_.folds();
    status_.launch(transfer_functions,
                   blocks_over(folds_of(plane_.nx), folds_of(plane_.ny), layers),
                   dim3(kBlockX, kBlockY), field_.data() + slot, flux_.data() + slot, wild_,
                   constants_ + first + done, kx_, ky_, plane_.nx, plane_.ny, options_.dz, rules_,
                   pairs_number_);
  }
}

void PairPlanes::sum(double2* E, double* F, const double2* S, const void* which, int bytes_a_sample,
                     Wild* wild, int step) {
  const dim3 block(kBlockX, kBlockY);
  const int nx = plane_.nx;
  const int ny = plane_.ny;
  status_.launch(bin_spectrum, blocks_over(nx, ny), block, f_.data(), power_.data(), wild, S, nx,
                 ny, step);
  for (int first = 0; first < count_; first += batch_) {
    const int batch = std::min(batch_, count_ - first);
    if (!has_all_transfers_) work_out_transfers(first, batch);
    const int slot = has_all_transfers_ ? first : 0;
    status_.launch(apply_transfer, blocks_over(nx, ny, batch), block, A_.data(), drift_.data(),
                   f_.data(), field_.data() + static_cast<std::size_t>(slot) * plane_.folds(), nx,
                   ny);
    sum_flux(slot, batch);
    invert(batch);
    const auto gather = [&](auto kernel, auto* samples) {
      status_.launch(kernel, blocks_over(plane_.covered_x, plane_.covered_y), block, E, F,
                     A_.data(), drift_.data(), pair_flux_, samples, nx, ny, plane_.covered_x,
                     plane_.covered_y, first, batch, plane_.drift_x, plane_.drift_y);
    };
    if (bytes_a_sample == 2)
      gather(gather_samples<std::uint16_t>, static_cast<const std::uint16_t*>(which));
    else
      gather(gather_samples<std::uint32_t>, static_cast<const std::uint32_t*>(which));
  }
}

void PairPlanes::sum_flux(int first_slot, int batch) {
  int count = strands_of(plane_.samples());
  double* sums = strands_[0].data();
  double* next = strands_[1].data();
  status_.launch(flux_strands, blocks_over_line(count, batch), dim3(kLineBlock), sums,
                 power_.data(),
                 flux_.data() + static_cast<std::size_t>(first_slot) * plane_.folds(), plane_.nx,
                 plane_.ny, count);
  while (count > 1) {
    const int fewer = strands_of(static_cast<std::size_t>(count));
    status_.launch(add_strands, blocks_over_line(fewer, batch), dim3(kLineBlock), next, sums, count,
                   fewer);
    std::swap(sums, next);
    count = fewer;
  }
  pair_flux_ = sums;
}

void PairPlanes::invert(int batch) {
  if (!status_.is_good()) return;
  const Plans& plans = plans_[batch];
  const char* doing = "transform the planes of pairs of indices";
  status_.take(cufftExecZ2Z(plans.field, A_.data(), A_.data(), CUFFT_INVERSE), doing);
  if (status_.is_good())
    status_.take(cufftExecC2C(plans.drift, drift_.data(), drift_.data(), CUFFT_INVERSE), doing);
}

}  // namespace device
