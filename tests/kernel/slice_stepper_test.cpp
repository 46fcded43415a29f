// The device's steps: conditions that must not change the result.
#include <numeric>
#include <utility>

#include "kernel/kernel.h"
#include "kernel/slice_host.h"

namespace {

using device::SliceStepper;
using SliceStepperTest = DeviceTest;

// The slice after two steps of the same pairs.
std::vector<double> two_steps(const Host& host, const device::StepperOptions& options) {
  SliceStepper stepper = host.stepper(options);
  stepper.set_field(host.field.data());
  for (int step = 0; step < 2; ++step) {
    stepper.set_pairs(host.pairs());
    stepper.step();
  }
  std::vector<double2> E(kSamples);
  std::vector<double> values(kSamples);
  stepper.fetch(E.data(), values.data());
  EXPECT_EQ(stepper.failure(), nullptr);
  for (const double2& e : E) values.insert(values.end(), {e.x, e.y});
  return values;
}

// Room for one pair's planes, and none for shared data: the same bits in more batches.
TEST_F(SliceStepperTest, LittleMemoryMakesNoDifference) {
  const Host host(20);
  const std::vector<double> expected = two_steps(host, options_of(true));
  device::StepperOptions options = options_of(true);
  options.plane_bytes = 1;
  EXPECT_EQ(two_steps(host, options), expected);
  options.transfer_bytes = 1;
  EXPECT_EQ(two_steps(host, options), expected);
}

// Values beyond single precision take the direct sum and have its bits.
TEST_F(SliceStepperTest, TheWildGoByTheDirectSum) {
  const auto expect_same = [](const Host& host, const char* what) {
    const std::vector<double> fast = two_steps(host, options_of(true));
    const std::vector<double> direct = two_steps(host, options_of(false));
    for (std::size_t v = 0; v < fast.size(); ++v)
      ASSERT_TRUE(fast[v] == direct[v] || (std::isnan(fast[v]) && std::isnan(direct[v]))) << what;
  };
  Host large(3), gain(3), nothing(3);
  for (double2& value : large.field) value = {value.x * 1e40, value.y * 1e40};
  gain.n_t[1].y = -90;
  nothing.n_i[2].x = 0;
  expect_same(large, "a field that single precision has no numbers for");
  expect_same(gain, "a gain of e^108");
  expect_same(nothing, "an index of zero");
}

// The findings are those of this slice, and not of one before it.
TEST_F(SliceStepperTest, FindsWhatASliceIsLike) {
  const Host host(3);
  for (const bool is_fast : {false, true}) {
    SliceStepper stepper = host.stepper(options_of(is_fast));
    stepper.set_pairs(host.pairs());
    const auto found_behind = [&](double value, int sample) {
      std::vector<double2> field = host.field;
      if (sample < 0) field.assign(kSamples, {0, 0});
      if (sample >= 0) field[static_cast<std::size_t>(sample)].y = value;
      stepper.set_field(field.data());
      stepper.step({true, true});
      const device::Findings found = stepper.findings();
      std::vector<double> F(kSamples);
      stepper.fetch(nullptr, F.data());
      if (found.is_finite) {
        const double sum = std::accumulate(F.begin(), F.end(), 0.0);
        EXPECT_NEAR(found.flux, sum, 1e-13 * std::fabs(sum));
      }
      return std::pair(found.is_finite, found.is_light);
    };
    EXPECT_EQ(found_behind(0, -1), std::pair(true, false));
    EXPECT_EQ(found_behind(1, 5), std::pair(true, true));
    EXPECT_EQ(found_behind(std::nan(""), kSamples - 1).first, false);
    EXPECT_EQ(found_behind(0, -1), std::pair(true, false));
    EXPECT_GE(stepper.step_seconds(), 0.0);
  }
}

TEST_F(SliceStepperTest, RefusesTheBlocksThatTheKernelOfVolumesCannotHave) {
  for (const int edge : {-1, 0, 33, 1024}) {
    device::StepperOptions options = options_of(true);
    options.blockSize = edge;
    const Host host(1);
    SliceStepper stepper = host.stepper(options);
    stepper.set_field(host.field.data());
    stepper.set_pairs(host.pairs());
    EXPECT_EQ(stepper.failure(), nullptr) << "a run of one slice launches nothing";
    stepper.step();
    ASSERT_NE(stepper.failure(), nullptr);
    EXPECT_EQ(stepper.failure()->number, cudaErrorInvalidConfiguration);
  }
}

}  // namespace
