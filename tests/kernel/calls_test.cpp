// Calls to the device, and their failures. Only the stand-in counts calls and fails on demand.
#include <algorithm>
#include <string>

#include "kernel/kernel.h"
#include "kernel/slice_host.h"
#include "standin.h"
#include "support/errors.h"

namespace {

using device::SliceStepper;
using standin::Call;
using standin::count_of;

// A step of the last one's pairs: one forward transform, and two inverse ones per batch. Launches:
// the spectrum by bins, and the direct sum if needed. Per batch: the amplitudes, the flux of 120
// bins in two levels, the gathering. Nothing is copied, allocated or waited for.
TEST(CallsOfAStep, AsksForNothingButLaunchesAndTransforms) {
  const struct {
    bool is_fast;
    int pairs, transforms, launches;
  } rows[] = {
      {true, 1, 3, 6}, {true, 16, 3, 6}, {true, 40, 7, 14}, {false, 3, 1, 4}, {true, 60, 1, 4}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.pairs);
    const Host host(row.pairs);
    SliceStepper stepper = host.stepper(options_of(row.is_fast));
    stepper.set_field(host.field.data());
    for (int step = 0; step < 3; ++step) {
      standin::count_anew();
      stepper.set_pairs(host.pairs());
      stepper.step();
    }
    EXPECT_EQ(count_of(Call::kTransform), row.transforms);
    EXPECT_EQ(count_of(Call::kLaunch), row.launches);
    for (const Call call : {Call::kAllocation, Call::kPlan, Call::kCopy, Call::kSynchronisation})
      EXPECT_EQ(count_of(call), 0) << static_cast<int>(call);
    EXPECT_EQ(stepper.failure(), nullptr);
    EXPECT_EQ(stepper.is_by_transforms(), row.transforms > 1);
    // One launch checks the field and two sum its flux. The result is one copy.
    standin::count_anew();
    stepper.step({true, true});
    EXPECT_EQ(count_of(Call::kLaunch), row.launches + 3);
    EXPECT_TRUE(stepper.findings().is_light);
    EXPECT_EQ(count_of(Call::kCopy), 1);
  }
}

// Only changed pairs are uploaded, or only changed samples, as two bytes each.
TEST(CallsOfAStep, UploadsWhatHasChanged) {
  Host host(5);
  SliceStepper stepper = host.stepper(options_of(true));
  stepper.set_field(host.field.data());
  stepper.set_pairs(host.pairs());
  standin::count_anew();
  host.samples[3] = 0;
  stepper.set_pairs(host.pairs());
  EXPECT_EQ(count_of(Call::kCopy), 1);
  EXPECT_EQ(count_of(Call::kLaunch), 0);
  host.n_t[1].x = 1.25;
  stepper.set_pairs(host.pairs());
  EXPECT_EQ(count_of(Call::kCopy), 1 + 3);
  EXPECT_EQ(count_of(Call::kAllocation), 0);
}

// After any failed call the stepper reports it and stops. No later call crashes.
TEST(CallsOfAStep, StopsAtTheFirstFailure) {
  const Host host(20);
  for (const bool is_fast : {true, false})
    for (const Call call :
         {Call::kAllocation, Call::kPlan, Call::kTransform, Call::kLaunch, Call::kCopy})
      for (int n = 1;; ++n) {
        standin::fail_call(call, n);
        SliceStepper stepper = host.stepper(options_of(is_fast));
        stepper.set_field(host.field.data());
        stepper.set_pairs(host.pairs());
        stepper.step({true, true});
        static_cast<void>(stepper.findings());
        static_cast<void>(stepper.step_seconds());
        std::vector<double2> E(kSamples);
        stepper.fetch(E.data(), nullptr);
        standin::fail_call(call, 0);
        const bool has_failed = cudaGetLastError() != cudaSuccess || stepper.failure() != nullptr;
        ASSERT_EQ(has_failed, stepper.failure() != nullptr) << static_cast<int>(call) << ' ' << n;
        if (!has_failed) {
          EXPECT_GT(n, 1);
          break;
        }
        EXPECT_NE(stepper.failure()->text.find("the device could not "), std::string::npos);
      }
}

// A failure without a return value is an error message, one per call. The slices stay.
TEST(CallsOfTheWrapper, ReportsWhatFailed) {
  Messages messages;
  const struct {
    Call call;
    const char* doing;
    cudaError_t left;
  } rows[] = {{Call::kAllocation, "make room for the spectrum", cudaErrorMemoryAllocation},
              {Call::kPlan, "plan the transform", cudaSuccess},
              {Call::kTransform, "transform a slice", cudaSuccess}};
  for (const auto& [call, doing, left] : rows) {
    const std::vector<cpx> before(3 * 16, cpx(1, 2));
    const DeviceArray<cpx> E(before), N(before), K(before);
    const DeviceArray<double> F(3 * 16), X(4);
    messages.clear();
    standin::fail_call(call, 1);
    naiveKernelWrapper_3D(E, F, N, K, X, K, X, 1, 1, 1, 1, 2, 4, 4, 4, true, false, true);
    EXPECT_EQ(std::ranges::count(messages.text(), '\n'), 1) << doing;
    EXPECT_NE(messages.text().find(doing), std::string::npos) << messages.text();
    EXPECT_EQ(cudaGetLastError(), left);
    EXPECT_EQ(E.download(), before) << "nothing is added of a spectrum that isn't there";
  }
}
}  // namespace
