// Thread counts that Pace chooses from the times of steps on a simulated machine.
#include "wpm/pace.h"

#include <gtest/gtest.h>

namespace {

// Steps of one unit of work on four threads. one and all take the given seconds.
class Machine {
 public:
  // Returns how many of the steps used all threads.
  int run(int steps, double with_one, double with_all, double work = 1.0) {
    int all = 0;
    for (int step = 0; step < steps; ++step) {
      pace_.next(work);
      EXPECT_TRUE(pace_.threads() == 1 || pace_.threads() == 4);
      const bool takes_all = pace_.threads() == 4;
      all += takes_all ? 1 : 0;
      const double seconds = (takes_all ? with_all : with_one) * work;
      pace_.took(seconds);
      spent_ += seconds;
    }
    return all;
  }
  [[nodiscard]] double spent() const { return spent_; }

 private:
  wpm::Pace pace_{4};
  double spent_ = 0;
};

TEST(Pace, KeepsToTheFasterSide) {
  for (const double step : {1e-5, 1e-3, 0.3}) {
    Machine quiet;
    EXPECT_GE(quiet.run(4000, step, 0.4 * step), 3700) << step;
    Machine busy;
    EXPECT_LE(busy.run(4000, step, 1.2 * step), 600) << step;
    EXPECT_LE(busy.spent(), 1.03 * 4000 * step) << step;
  }
}

// Steps of many pairs take longer. Pace compares times per unit of work.
TEST(Pace, MeasuresByTheWork) {
  Machine machine;
  int all = 0;
  for (int turn = 0; turn < 400; ++turn) all += machine.run(5, 1e-3, 0.8e-3, turn % 2 == 0 ? 1 : 9);
  EXPECT_GE(all, 1700);
}

// Pace notices the change long before the next trial.
TEST(Pace, NoticesAMachineThatBecomesBusyAndIdleAgain) {
  Machine machine;
  machine.run(3000, 1e-3, 0.6e-3);
  EXPECT_LE(machine.run(300, 1e-3, 3e-3), 40);
  EXPECT_GE(machine.run(3000, 1e-3, 0.6e-3), 1500);
}

TEST(Pace, HasNoChoiceOfOneThread) {
  wpm::Pace alone(1);
  for (int step = 0; step < 500; ++step) {
    alone.next(1.0);
    EXPECT_EQ(alone.threads(), 1);
    alone.took(1.0);
  }
}

}  // namespace
