// The device's steps from slice to slice: what must make no difference to the result.
#include "kernel/kernel.h"
#include "kernel/slice_host.h"

namespace {

using device::SliceStepper;
using SliceStepperTest = DeviceTest;

// The slice behind two steps, the second of which is of the pairs of the first.
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

// Room for one pair's planes, and none for what pairs share: the same bits, in more turns.
TEST_F(SliceStepperTest, LittleMemoryMakesNoDifference) {
  const Host host(20);
  const std::vector<double> expected = two_steps(host, options_of(true));
  device::StepperOptions options = options_of(true);
  options.plane_bytes = 1;
  EXPECT_EQ(two_steps(host, options), expected);
  options.transfer_bytes = 1;
  EXPECT_EQ(two_steps(host, options), expected);
}

// Values that single precision cannot hold go by the direct sum, to its bits.
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
