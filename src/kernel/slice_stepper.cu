#include "kernel/slice_stepper.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "kernel/direct_sum.cuh"
#include "kernel/pair_planes.h"
#include "kernel/slice_report.h"

namespace device {
namespace {

// With more pairs than this share of the samples the direct sum does less work.
constexpr double kLargestShareOfPairs = 0.4;

constexpr const char* kTiming = "time a step";

bool same_bits(const std::vector<double2>& a, const double2* b) {
  return std::memcmp(a.data(), b, a.size() * sizeof(double2)) == 0;
}

}  // namespace

struct SliceStepper::Inside {
  Inside(const SliceAxis& x, const SliceAxis& y, const StepperOptions& options);
  ~Inside();
  void set_pairs(const StepPairs& pairs);
  void step(const Survey& survey);
  template <class T>
  void fetch(const Array<T>& from, T* host, const Rectangle& part);

  template <class Index>
  void upload_samples(const Index* samples, Array<Index>& to);
  void sum_directly(double2* E);
  void sum_again_if_wild(double2* E);

  Plane plane;
  StepperOptions options;
  ModeRules rules;
  Status status;
  PairPlanes planes;
  cufftHandle forward = 0;
  Array<double> kx, ky, X, Y;
  Array<double2> E[2];  // of the slice to step from, and the next
  int current = 0;
  Array<double> F;
  Array<double2> S;
  Array<Wild> wild;
  SliceReporter reporter;
  cudaEvent_t begun = nullptr, done = nullptr;

  // Of the pairs.
  std::vector<double2> host_n_i, host_n_t;
  std::vector<std::uint32_t> host_samples;
  std::vector<std::uint16_t> host_narrow;
  Array<double2> n_i, n_t;
  Array<IndexPair> constants;
  Array<std::uint16_t> narrow;
  Array<std::uint32_t> wide;
  bool is_narrow = false;
  bool is_by_transforms = false;
  int pairs_number = 0;
  int step_number = 0;

  // Of the direct sum.
  Array<KeptWave> waves;
  Array<int> row_begin;
};

SliceStepper::Inside::Inside(const SliceAxis& x, const SliceAxis& y, const StepperOptions& options_)
    : plane(x.n, y.n, std::max(1, options_.blockSize)),
      options(options_),
      rules{options_.do_evanescent_modes, options_.is_magnetic_field, options_.is_TE,
            options_.is_trimmed},
      planes(plane, rules, options_, status),
      reporter(plane, status) {
  const char* making_room = "make room for the planes of a slice";
  const std::size_t samples = plane.samples();
  for (Array<double2>* array : {&E[0], &E[1], &S}) status.reserve(*array, samples, making_room);
  status.reserve(F, samples, making_room);
  status.reserve(wild, 1, making_room);
  const auto upload = [&](Array<double>& array, const double* host, int n) {
    status.reserve(array, static_cast<std::size_t>(n), making_room);
    if (status.is_good())
      status.take(array.upload(host, static_cast<std::size_t>(n)), "take the axes");
  };
  upload(kx, x.frequencies, x.n);
  upload(ky, y.frequencies, y.n);
  upload(X, x.positions, x.n);
  upload(Y, y.positions, y.n);
  if (status.is_good())
    // nx is the slow extent, as on the CPU: a plane is read as nx rows of ny samples.
    status.take(cufftPlan2d(&forward, plane.nx, plane.ny, CUFFT_Z2Z),
                "plan the transform of a slice");
  for (auto* array : {&E[0], &E[1]})
    if (status.is_good()) status.take(array->clear(), making_room);
  if (status.is_good()) status.take(F.clear(), making_room);
  if (status.is_good()) status.take(wild.clear(), making_room);
  for (cudaEvent_t* event : {&begun, &done})
    if (status.is_good()) status.take(cudaEventCreate(event), kTiming);
}

SliceStepper::Inside::~Inside() {
  if (forward != 0) cufftDestroy(forward);
  for (const cudaEvent_t event : {begun, done})
    if (event != nullptr) cudaEventDestroy(event);
}

template <class Index>
void SliceStepper::Inside::upload_samples(const Index* samples, Array<Index>& to) {
  const char* doing = "take the pairs of indices";
  status.reserve(to, plane.samples(), doing);
  if (status.is_good()) status.take(to.upload(samples, plane.samples()), doing);
}

void SliceStepper::Inside::set_pairs(const StepPairs& pairs) {
  const char* doing = "take the pairs of indices";
  const auto count = static_cast<std::size_t>(pairs.count);
  const bool is_same_list = pairs_number > 0 && count == host_n_i.size() &&
                            same_bits(host_n_i, pairs.n_i) && same_bits(host_n_t, pairs.n_t);
  if (!is_same_list) {
    ++pairs_number;
    host_n_i.assign(pairs.n_i, pairs.n_i + count);
    host_n_t.assign(pairs.n_t, pairs.n_t + count);
    status.reserve(n_i, count, doing);
    status.reserve(n_t, count, doing);
    status.reserve(constants, count, doing);
    if (!status.is_good()) return;
    status.take(n_i.upload(pairs.n_i, count), doing);
    status.take(n_t.upload(pairs.n_t, count), doing);
    status.launch(pair_constants, blocks_over_line(pairs.count), dim3(kLineBlock), constants.data(),
                  n_i.data(), n_t.data(), pairs.count, options.k0, options.dz);
    is_by_transforms = options.is_fast &&
                       pairs.count <= kLargestShareOfPairs * static_cast<double>(plane.samples());
    if (is_by_transforms) {
      planes.set_pairs(pairs.count, constants.data(), kx.data(), ky.data(), wild.data(),
                       pairs_number);
    } else {
      status.reserve(waves, plane.samples(), doing);
      status.reserve(row_begin, static_cast<std::size_t>(plane.ny) + 1, doing);
    }
  }
  const bool is_same_place =
      is_same_list && std::equal(host_samples.begin(), host_samples.end(), pairs.samples);
  if (is_same_place) return;
  host_samples.assign(pairs.samples, pairs.samples + plane.samples());
  is_narrow = pairs.count <= std::numeric_limits<std::uint16_t>::max();
  if (is_narrow) {
    host_narrow.assign(host_samples.begin(), host_samples.end());
    upload_samples(host_narrow.data(), narrow);
  } else {
    upload_samples(host_samples.data(), wide);
  }
}

void SliceStepper::Inside::step(const Survey& survey) {
  ++step_number;
  status.take(cudaEventRecord(begun, nullptr), kTiming);
  const bool is_possible_block = options.blockSize >= 1 && options.blockSize <= 32;
  if (!is_possible_block) {
    status.take(cudaErrorInvalidConfiguration, "launch a step in blocks of that edge");
    return;
  }
  double2* next = E[1 - current].data();
  if (status.is_good())
    status.take(cufftExecZ2Z(forward, E[current].data(), S.data(), CUFFT_FORWARD),
                "transform a slice");
  const bool is_covered = plane.covered_x == plane.nx && plane.covered_y == plane.ny;
  if (status.is_good() && !is_covered) status.take(E[1 - current].clear(), "clear a slice");
  if (is_by_transforms) {
    const void* which = is_narrow ? static_cast<const void*>(narrow.data()) : wide.data();
    planes.sum(next, F.data(), S.data(), which, is_narrow ? 2 : 4, wild.data(), step_number);
    sum_again_if_wild(next);
  } else {
    sum_directly(next);
  }
  current = 1 - current;
  reporter.look_over(survey, next, F.data(), step_number);
  if (status.is_good()) status.take(cudaEventRecord(done, nullptr), kTiming);
}

template <class T>
void SliceStepper::Inside::fetch(const Array<T>& from, T* host, const Rectangle& part) {
  const int columns = std::min(part.end_column, plane.nx) - part.first_column;
  const int rows = std::min(part.end_row, plane.ny) - part.first_row;
  if (host == nullptr || columns <= 0 || rows <= 0 || !status.is_good()) return;
  const auto size = [](int count) { return static_cast<std::size_t>(count); };
  const std::size_t first = size(part.first_row) * size(plane.nx) + size(part.first_column);
  const std::size_t pitch = size(plane.nx) * sizeof(T);
  status.take(cudaMemcpy2D(host + first, pitch, from.data() + first, pitch,
                           size(columns) * sizeof(T), size(rows), cudaMemcpyDeviceToHost),
              "hand the slice over");
}

void SliceStepper::Inside::sum_directly(double2* to) {
  const dim3 rows = blocks_over_line(plane.ny);
  status.launch(count_waves, rows, dim3(kLineBlock), row_begin.data(), S.data(), plane.nx,
                plane.ny);
  status.launch(add_up_rows, dim3(1), dim3(1), row_begin.data(), plane.ny);
  status.launch(list_waves, rows, dim3(kLineBlock), waves.data(), row_begin.data(), S.data(),
                kx.data(), ky.data(), plane.nx, plane.ny);
  const auto sum = [&](auto kernel, auto* samples) {
    status.launch(kernel, blocks_over(plane.covered_x, plane.covered_y), dim3(kBlockX, kBlockY), to,
                  F.data(), waves.data(), row_begin.data(), constants.data(), samples, X.data(),
                  Y.data(), options.dz, plane.nx, plane.ny, plane.covered_x, plane.covered_y,
                  rules);
  };
  if (is_narrow)
    sum(sum_listed<std::uint16_t>, narrow.data());
  else
    sum(sum_listed<std::uint32_t>, wide.data());
}

void SliceStepper::Inside::sum_again_if_wild(double2* to) {
  const auto sum = [&](auto kernel, auto* samples) {
    status.launch(kernel, blocks_over(plane.covered_x, plane.covered_y), dim3(kBlockX, kBlockY), to,
                  F.data(), S.data(), wild.data(), step_number, pairs_number, constants.data(),
                  samples, kx.data(), ky.data(), X.data(), Y.data(), options.dz, plane.nx, plane.ny,
                  plane.covered_x, plane.covered_y, rules);
  };
  if (is_narrow)
    sum(sum_if_wild<std::uint16_t>, narrow.data());
  else
    sum(sum_if_wild<std::uint32_t>, wide.data());
}

SliceStepper::SliceStepper(const SliceAxis& x, const SliceAxis& y, const StepperOptions& options)
    : inside_(std::make_unique<Inside>(x, y, options)) {}

SliceStepper::~SliceStepper() = default;

void SliceStepper::set_field(const double2* E) {
  Inside& in = *inside_;
  if (in.status.is_good())
    in.status.take(in.E[in.current].upload(E, in.plane.samples()), "take the field");
}

void SliceStepper::set_pairs(const StepPairs& pairs) {
  if (inside_->status.is_good()) inside_->set_pairs(pairs);
}

void SliceStepper::set_edge(const double* of_columns, const double* of_rows) {
  inside_->reporter.set_edge(of_columns, of_rows);
}

void SliceStepper::step(const Survey& survey) {
  if (inside_->status.is_good()) inside_->step(survey);
}

void SliceStepper::fetch(double2* E, double* F, const Rectangle& part) {
  inside_->fetch(inside_->E[inside_->current], E, part);
  inside_->fetch(inside_->F, F, part);
}

void SliceStepper::fetch_last(double2* E) {
  inside_->fetch(inside_->E[1 - inside_->current], E, {});
}

Findings SliceStepper::findings() {
  return inside_->reporter.findings(inside_->step_number);
}

double SliceStepper::step_seconds() {
  Inside& in = *inside_;
  float ms = 0;
  if (in.status.is_good()) in.status.take(cudaEventSynchronize(in.done), kTiming);
  if (in.status.is_good()) in.status.take(cudaEventElapsedTime(&ms, in.begun, in.done), kTiming);
  return 1e-3 * static_cast<double>(ms);
}

bool SliceStepper::is_by_transforms() const {
  return inside_->is_by_transforms;
}

const Failure* SliceStepper::failure() const {
  return inside_->status.failure();
}

}  // namespace device
