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

void DeviceStepper::step(const Slice& from, const Slice& to) {
  Slice made = to;
  begin(from, to, {{.E = true, .F = true}});
  finish(made);
}

bool DeviceStepper::adopt(FieldMask& mask) {
  auto* edge = dynamic_cast<EdgeMask*>(&mask);
  if (edge == nullptr || !stepper_) return false;
  edge_ = edge;
  stepper_->set_edge(edge->factor_x().data(), edge->factor_y().data());
  require_success();
  return true;
}

void DeviceStepper::begin(const Slice& from, const Slice& to, const StepOrder& order) {
  if (!stepper_) return;
  if (!from.is_as_made) stepper_->set_field(on_device(from.E));
  set_pairs(from, to);
  made_ = to.E;
  parts_ = order.parts;
  // The direct sum has the bits of whole volumes, whose flux the host adds up in its own order.
  survey_ = {parts_.flux && stepper_->is_by_transforms(), parts_.health,
             order.is_masked && edge_ != nullptr};
  began_ = std::chrono::steady_clock::now();
  stepper_->step(survey_);
  require_success();
  begun_ = std::chrono::steady_clock::now();
}

void DeviceStepper::finish(Slice& to) {
  if (!stepper_) return;
  const Time asked = std::chrono::steady_clock::now();
  const device::Rectangle part = {parts_.first_row, parts_.end_row, parts_.first_column,
                                  parts_.end_column};
  const bool is_all_F_wanted = parts_.flux && !survey_.flux;
  stepper_->fetch(parts_.E ? on_device(to.E) : nullptr,
                  parts_.F && !is_all_F_wanted ? to.F : nullptr, part);
  if (is_all_F_wanted) stepper_->fetch(nullptr, to.F);
  if (survey_.flux || survey_.health || survey_.has_edge) tell(stepper_->findings(), to);
  const std::chrono::duration<double> seconds(stepper_->step_seconds());
  require_success();
  to.is_as_made = true;
  const std::chrono::duration<double> between =
      std::min<std::chrono::duration<double>>(seconds, asked - began_) - (begun_ - began_);
  seconds_between_ = std::max(0.0, between.count());
}

void DeviceStepper::tell(const device::Findings& found, Slice& slice) const {
  if (survey_.flux) slice.flux = found.flux;
  if (survey_.has_edge) edge_->add_taken(found.taken);
  if (survey_.health)
    slice.health = !found.is_finite ? Health::kNotFinite
                   : found.is_light ? Health::kLight
                                    : Health::kDark;
}

void DeviceStepper::bring_field(const Slice& slice) {
  if (!stepper_ || !slice.is_as_made) return;
  if (slice.E == made_)
    stepper_->fetch(on_device(slice.E), nullptr);
  else
    stepper_->fetch_last(on_device(slice.E));
  require_success();
}

void DeviceStepper::look_ahead(const Slice& from, const Slice& to) {
  if (!stepper_) return;
  find_pairs(from, to);
  ahead_from_ = from.N;
  ahead_to_ = to.N;
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
  if (from.N != ahead_from_ || to.N != ahead_to_) find_pairs(from, to);
  ahead_from_ = ahead_to_ = nullptr;
  if (!are_others_) return;
  are_others_ = false;
  stepper_->set_pairs({static_cast<int>(n_i_.size()), n_i_.data(), n_t_.data(), places_.data()});
}

const char* DeviceStepper::sum_taken() const {
  return stepper_ && stepper_->is_by_transforms() ? "transforms" : "direct sum";
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
