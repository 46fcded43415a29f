// Sums shared by threads.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

#include "support/errors.h"
#include "support/scene.h"
#include "wpm/threads.h"

namespace {

class Threads : public testing::Test {
 protected:
  ~Threads() override { wpm::set_threads(1); }
};

TEST_F(Threads, DoEveryTaskOnceAndAreDoneWhenTheCallReturns) {
  constexpr double kMuch = 1e9;  // ns, enough for all threads
  for (const int threads : {1, 2, 5, 3})
    for (const int count : {0, 1, 7, 1000}) {
      wpm::set_threads(threads);
      std::vector<std::atomic<int>> times(static_cast<std::size_t>(count));
      std::atomic<int> strays = 0;
      for (int call = 1; call <= 20; ++call) {
        wpm::share_out(count, kMuch, [&](int index, int worker) {
          ++times[static_cast<std::size_t>(index)];
          if (worker < 0 || worker >= threads) ++strays;
          // A call within a task runs on its own thread.
          wpm::share_out(2, kMuch, [&](int, int inner) { strays += inner == 0 ? 0 : 1; });
        });
        for (const auto& time : times) ASSERT_EQ(time, call) << threads << " threads";
      }
      EXPECT_EQ(strays, 0);
    }
}

// The caller gets it after all tasks. The team serves the next call.
TEST_F(Threads, HandAnExceptionToTheCaller) {
  for (const int threads : {1, 3}) {
    wpm::set_threads(threads);
    for (int call = 0; call < 20; ++call) {
      std::atomic<int> done = 0;
      EXPECT_ERROR(wpm::share_out(100, 1e9,
                                  [&](int index, int) {
                                    if (index == 5 * call) throw zerith::Error("task");
                                    ++done;
                                  }),
                   "^task$");
      EXPECT_LE(done, 99);
      int inside = 0;
      wpm::share_out(1, 1e9, [&](int, int) { ++inside; });
      EXPECT_EQ(inside, 1);
    }
  }
}

// Every sum has one order for any number of threads.
TEST_F(Threads, ChangeNoBitOfTheFastSum) {
  const auto run = [](int threads) {
    wpm::set_threads(threads);
    Scene scene(72, 72, 4, 0.3e-6, 0.25e-6, 0.2e-6, 1e-6);
    for (int j = 20; j < 50; ++j)
      for (int i = 30; i < 45; ++i) scene.N[scene.index(2, j, i)] = {1.5, 0.01};
    scene.illuminate([](double x, double y) { return 1e3 * std::exp(-(x * x + y * y) / 1e-12); });
    EXPECT_EQ(scene.propagate_by(make_fast_stepper).transforms, 3);
    return scene;
  };
  const Scene one = run(1);
  for (const int threads : {2, 3, 7}) {
    const Scene many = run(threads);
    EXPECT_EQ(std::memcmp(many.E.data(), one.E.data(), one.E.size() * sizeof(cpx)), 0) << threads;
    EXPECT_EQ(std::memcmp(many.F.data(), one.F.data(), one.F.size() * sizeof(double)), 0);
  }
}

}  // namespace
