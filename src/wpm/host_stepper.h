// Steppers of the host, whose steps are done when start returns.
#pragma once

#include <chrono>

#include "wpm/stepper.h"

namespace wpm {

class HostStepper : public Stepper {
 public:
  void start(const Slice& from, const Slice& to, const SliceRequest& /*all is made*/) final {
    const auto begin = std::chrono::steady_clock::now();
    result_ = step(from, to);
    result_.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  }
  StepResult wait() final { return result_; }

 private:
  // One step; of the result all but the seconds.
  virtual StepResult step(const Slice& from, const Slice& to) = 0;

  StepResult result_;
};

}  // namespace wpm
