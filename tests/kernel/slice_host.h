// A slice and its index pairs, for tests of the device's steps.
#pragma once

#include <cmath>
#include <vector>

#include "kernel/device_test.h"
#include "kernel/slice_stepper.h"

inline constexpr int kNx = 12, kNy = 10;
inline constexpr int kSamples = kNx * kNy;

// A slice and count index pairs, each at every count-th sample.
struct Host {
  explicit Host(int count) {
    for (int i = 0; i < kNx; ++i) kx.push_back((i < kNx / 2 ? i : i - kNx) * 6.2831853 / kNx);
    for (int i = 0; i < kNy; ++i) ky.push_back((i < kNy / 2 ? i : i - kNy) * 6.2831853 / kNy);
    for (int i = 0; i < kNx; ++i) x.push_back(i - kNx / 2);
    for (int i = 0; i < kNy; ++i) y.push_back(i - kNy / 2);
    for (int s = 0; s < kSamples; ++s) {
      field.push_back({std::sin(s), std::cos(3.0 * s)});
      samples.push_back(static_cast<unsigned>(s % count));
    }
    for (int pair = 0; pair < count; ++pair) {
      n_i.push_back({1 + 0.01 * pair, 0});
      n_t.push_back({1.5 - 0.01 * pair, 0.001});
    }
  }

  [[nodiscard]] device::StepPairs pairs() const {
    return {static_cast<int>(n_i.size()), n_i.data(), n_t.data(), samples.data()};
  }
  [[nodiscard]] device::SliceStepper stepper(const device::StepperOptions& options) const {
    return device::SliceStepper({kNx, kx.data(), x.data()}, {kNy, ky.data(), y.data()}, options);
  }

  std::vector<double> kx, ky, x, y;
  std::vector<double2> field, n_i, n_t;
  std::vector<std::uint32_t> samples;
};

inline device::StepperOptions options_of(bool is_fast) {
  device::StepperOptions options = {4.0, 0.3};
  options.is_fast = is_fast;
  options.blockSize = 4;
  return options;
}
