#include "main/device_stepper.h"

#include <algorithm>
#include <iostream>

#include "diagnostics.h"
#include "wpm/axes.h"
#include "wpm/axis.h"

namespace {

double2* on_device(cpx* values) {
  return reinterpret_cast<double2*>(values);
}

// One axis as the run samples it.
struct SampledAxis {
  std::vector<cpx> K;
  std::vector<double> frequencies, positions;

  SampledAxis(const std::vector<cpx>& K_, const std::vector<double>& positions_)
      : K(K_), positions(positions_) {
    for (const cpx& k : K) frequencies.push_back(k.real());
  }

  [[nodiscard]] device::SliceAxis view() const {
    return {static_cast<int>(K.size()), frequencies.data(), positions.data()};
  }
  [[nodiscard]] bool is_for_transforms() const {
    return wpm::is_regular(K.data(), positions.data(), static_cast<int>(K.size()));
  }
};

StepResult result_of(const device::Survey& survey, device::SliceStepper& stepper) {
  StepResult result;
  result.sum = stepper.is_by_transforms() ? Sum::kTransforms : Sum::kDirect;
  if (!survey.flux && !survey.health && !survey.has_edge) return result;
  const device::Findings found = stepper.findings();
  if (survey.flux) result.flux = found.flux;
  if (survey.has_edge) result.taken = found.taken;
  if (survey.health)
    result.state = !found.is_finite ? FieldState::kNotFinite
                   : found.is_light ? FieldState::kLight
                                    : FieldState::kDark;
  return result;
}

}  // namespace

DeviceStepper::DeviceStepper(const Grid& grid, const StepOptions& options,
                             const DeviceChoice& choice)
    : samples_(grid.plane()), runs_(grid) {
  if (samples_ == 0) return;
  const wpm::Axes axes(grid);
  const SampledAxis x(axes.KX, axes.X);
  const SampledAxis y(axes.KY, axes.Y);
  device::StepperOptions on_device = {options.k0, options.dz};
  on_device.do_evanescent_modes = options.do_evanescent_modes;
  on_device.is_magnetic_field = options.is_magnetic_field;
  on_device.is_TE = choice.is_TE;
  on_device.is_trimmed = options.is_trimmed;
  on_device.is_fast = choice.is_fast && x.is_for_transforms() && y.is_for_transforms();
  on_device.blockSize = choice.blockSize;
  stepper_.emplace(x.view(), y.view(), on_device);
  require_success();
}

void DeviceStepper::set_mask(const FieldMask& mask) {
  if (&mask == mask_) return;
  mask_ = &mask;
  const FieldMask::Factors factors = mask.factors();
  stepper_->set_edge(factors.columns.data(), factors.rows.data());
}

void DeviceStepper::start(const Slice& from, const Slice& to, const SliceRequest& request) {
  if (!stepper_) return;
  const Time begin = std::chrono::steady_clock::now();
  if (!from.on_device) stepper_->set_field(on_device(from.E));
  set_pairs(from, to);
  if (request.mask != nullptr) set_mask(*request.mask);
  made_ = to;
  request_ = request;
  // The direct sum has the bits of whole volumes, whose flux the host adds up in its own order.
  survey_ = {request.flux && stepper_->is_by_transforms(), request.state, request.mask != nullptr};
  launched_ = std::chrono::steady_clock::now();
  stepper_->step(survey_);
  require_success();
  started_ = std::chrono::steady_clock::now();
  seconds_to_start_ = started_ - begin;
}

StepResult DeviceStepper::wait() {
  if (!stepper_) return {};
  const Time begin = std::chrono::steady_clock::now();
  const device::Rectangle part = {request_.first_row, request_.end_row, request_.first_column,
                                  request_.end_column};
  const bool is_all_F_needed = request_.flux && !survey_.flux;
  stepper_->fetch(request_.E ? on_device(made_.E) : nullptr,
                  request_.F && !is_all_F_needed ? made_.F : nullptr, part);
  if (is_all_F_needed) stepper_->fetch(nullptr, made_.F);
  StepResult result = result_of(survey_, *stepper_);
  const std::chrono::duration<double> of_device(stepper_->step_seconds());
  require_success();
  // Other work of the host between start and wait is not part of the step.
  const std::chrono::duration<double> between =
      std::min<std::chrono::duration<double>>(of_device, begin - launched_) -
      (started_ - launched_);
  const std::chrono::duration<double> here = std::chrono::steady_clock::now() - begin;
  result.seconds = seconds_to_start_.count() + std::max(0.0, between.count()) + here.count();
  return result;
}

void DeviceStepper::fetch_field(const Slice& slice) {
  if (!stepper_) return;
  if (slice.E == made_.E)
    stepper_->fetch(on_device(slice.E), nullptr);
  else
    stepper_->fetch_last(on_device(slice.E));
  require_success();
}

void DeviceStepper::prefetch(const Slice& from, const Slice& to) {
  if (!stepper_) return;
  find_pairs(from, to);
  next_from_ = from.N;
  next_to_ = to.N;
}

void DeviceStepper::find_pairs(const Slice& from, const Slice& to) {
  if (!runs_.find(from, to)) return;
  are_others_ = true;
  n_i_.clear();
  n_t_.clear();
  for (const IndexPair& pair : runs_.pairs()) {
    n_i_.push_back({pair.n_i.real(), pair.n_i.imag()});
    n_t_.push_back({pair.n_t.real(), pair.n_t.imag()});
  }
  places_.resize(samples_);
  runs_.places(places_.data());
}

void DeviceStepper::set_pairs(const Slice& from, const Slice& to) {
  if (from.N != next_from_ || to.N != next_to_) find_pairs(from, to);
  next_from_ = next_to_ = nullptr;
  if (!are_others_) return;
  are_others_ = false;
  stepper_->set_pairs({static_cast<int>(n_i_.size()), n_i_.data(), n_t_.data(), places_.data()});
}

void DeviceStepper::require_success() const {
  const device::Failure* failure = stepper_->failure();
  if (failure == nullptr) return;
  if (failure->number != 0)
    std::cout << "\033[31m***ERROR*** " << failure->number << " - "
              << cudaGetErrorString(static_cast<cudaError_t>(failure->number)) << "***\033[0m"
              << std::endl;
  const std::string advice =
      failure->number == cudaErrorInvalidConfiguration
          ? "a block edge of 1 to 32 (-b) suits every device"
          : "make nx and ny smaller if the device is full, or run on the CPU with -p alone";
  diagnostics::fail(failure->text + "; " + advice);
}
