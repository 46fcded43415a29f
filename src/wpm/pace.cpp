#include "wpm/pace.h"

#include <algorithm>

namespace wpm {
namespace {

// A trial lasts longer than what a system gives a program at a time, or many steps.
constexpr double kTrialSeconds = 0.01;
constexpr int kFewSteps = 3, kManySteps = 60;
// Where one step says enough: the steps of a large plane take long, on one thread above all.
constexpr double kClearly = 1.3;

// Lengths of a trial to the next: at first, and where trials come out alike.
constexpr double kShortRest = 4, kLongRest = 64;

}  // namespace

bool Pace::Side::is_known() const {
  return steps >= kManySteps || (steps >= kFewSteps && seconds >= kTrialSeconds);
}

void Pace::add(Side& side, double seconds) const {
  side.seconds += seconds;
  side.work += work_;
  ++side.steps;
}

void Pace::took(double seconds) {
  if (all_ < 2) return;
  if (!is_warm_) {
    is_warm_ = true;
    return;
  }
  if (!is_trial_) return rest(seconds);
  if (takes_all_) {
    add(with_all_, seconds);
    takes_all_ = !with_all_.is_known();
    return;
  }
  add(with_one_, seconds);
  const double gain = with_one_.of_work() / with_all_.of_work();
  const bool is_clear =
      with_one_.seconds >= kTrialSeconds && (gain > kClearly || gain * kClearly < 1.0);
  if (is_clear || with_one_.is_known()) end_trial(gain > 1.0);
}

void Pace::rest(double seconds) {
  add(rest_, seconds);
  seconds_left_ -= seconds;
  bool has_lost = false;
  if (rest_.is_known()) {
    has_lost = rest_.of_work() > (takes_all_ ? with_one_ : with_all_).of_work();
    rest_ = {};
  }
  if (seconds_left_ > 0.0 && !has_lost) return;
  is_trial_ = takes_all_ = true;
  with_all_ = with_one_ = rest_ = {};
}

void Pace::end_trial(bool all_won) {
  rests_ = rests_ > 0.0 && all_won == all_won_ ? std::min(2 * rests_, kLongRest) : kShortRest;
  all_won_ = takes_all_ = all_won;
  is_trial_ = false;
  seconds_left_ = rests_ * (with_all_.seconds + with_one_.seconds);
}

}  // namespace wpm
