// The loop over slices: the order of calls, and the same slices from a device's stepper.
#include "wpm/march.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

#include "wpm/health.h"

namespace {

constexpr int kSamples = 2;

Grid grid_of(int nz) {
  Grid grid;
  grid.nx = 1, grid.ny = kSamples, grid.nz = nz;
  return grid;
}

using Events = std::vector<std::string>;

// Room for two slices, as in a stream. A painted slice has index k + 1, and wrong numbers in E and
// F.
class TwoSlices : public Slices {
 public:
  TwoSlices(Events& events, SliceDevice* device, bool are_kept, int first)
      : Slices(device), events_(events), are_kept_(are_kept), first_(first) {}
  [[nodiscard]] bool are_kept() const override { return are_kept_; }
  [[nodiscard]] std::size_t samples() const override { return kSamples; }

 private:
  Slice slice(int k, bool is_new) override {
    Room& room = rooms_[k % 2];
    if (is_new) {
      events_.push_back("paint " + std::to_string(k));
      room.E.fill(k == first_ ? 1.0 : -7.0);
      room.F.fill(-7.0);
      room.N.fill(k + 1.0);
    }
    return {room.E.data(), room.F.data(), room.N.data(), k};
  }

  struct Room {
    std::array<cpx, kSamples> E, N;
    std::array<double, kSamples> F;
  };
  Events& events_;
  bool are_kept_;
  int first_;
  Room rooms_[2];
};

// Doubles slice 3, or makes it dark.
class Screen : public FieldMask {
 public:
  explicit Screen(double factor) : factor_(factor) {}
  void apply(int /*k*/, cpx* E) override {
    for (int s = 0; s < kSamples; ++s) E[s] *= factor_;
  }
  [[nodiscard]] bool covers(int k) const override { return k == 3; }

 private:
  double factor_;
};

// Halves the field after every step, by factors that a device can apply.
class Halving : public FieldMask {
 public:
  explicit Halving(Events& events) : events_(events) {}
  void apply(int k, cpx* E) override {
    events_.push_back("halve " + std::to_string(k));
    for (int s = 0; s < kSamples; ++s) add_taken(0.75 * std::norm(E[s])), E[s] *= 0.5;
  }
  [[nodiscard]] bool covers(int k) const override { return k > 0; }
  [[nodiscard]] Factors factors() const override { return {kColumns, kRows}; }
  void add_taken(double sum) override { taken += sum; }

  double taken = 0;

 private:
  static constexpr double kColumns[] = {0.5};
  static constexpr double kRows[] = {1.0, 1.0};
  Events& events_;
};

// Multiplies by the index after the step.
class Times : public Stepper {
 public:
  explicit Times(Events& events) : events_(events) {}
  void start(const Slice& from, const Slice& to, const SliceRequest& request) override {
    EXPECT_EQ(request.mask, nullptr);
    events_.emplace_back("step");
    for (int s = 0; s < kSamples; ++s) to.E[s] = from.E[s] * to.N[s], to.F[s] = 5;
  }
  StepResult wait() override { return {.sum = Sum::kTransforms, .error = 0.25}; }

 private:
  Events& events_;
};

// The same on a device, which keeps the field and copies what is requested of it.
class TimesOnDevice : public Stepper, public SliceDevice {
 public:
  explicit TimesOnDevice(Events& events) : events_(events) {}
  void start(const Slice& from, const Slice& to, const SliceRequest& request) override {
    events_.emplace_back(from.on_device ? "start" : "start from the host");
    request_ = request;
    last_ = from.on_device ? here_ : from.E[1];
    here_ = last_ * to.N[1];
    made_ = to;
    taken_ = 0;
    if (request.mask == nullptr) return;
    const double factor = request.mask->factors().columns[0];
    taken_ = kSamples * (1 - factor * factor) * std::norm(here_);
    here_ *= factor;
  }
  StepResult wait() override {
    events_.emplace_back("wait");
    if (request_.E)
      for (int s = request_.first_row; s < std::min(request_.end_row, kSamples); ++s)
        made_.E[s] = here_;
    if (request_.F) std::fill_n(made_.F, kSamples, 5.0);
    StepResult result = {.sum = Sum::kTransforms, .seconds = 1000, .taken = taken_, .error = 0.25};
    if (request_.flux) result.flux = 5.0 * kSamples;
    if (request_.state) result.state = FieldState::kLight;
    return result;
  }
  void prefetch(const Slice& from, const Slice& to) override {
    events_.push_back("prefetch " + std::to_string(std::lround(from.N[0].real())) + " " +
                      std::to_string(std::lround(to.N[0].real())));
  }
  void fetch_field(const Slice& slice) override {
    events_.emplace_back("fetch");
    std::fill_n(slice.E, kSamples, slice.E == made_.E ? here_ : last_);
  }

 private:
  Events& events_;
  SliceRequest request_;
  cpx here_, last_;
  double taken_ = 0;
  Slice made_{};
};

// Requires the second sample of every other slice, and all sums.
class Second : public Sink {
 public:
  explicit Second(Events& events) : events_(events) {}
  void take(int k, const Slice& slice) override {
    const double field = k % 2 != 0 ? slice.E[1].real() : 0.0;
    events_.push_back("take " + std::to_string(k));
    seen.insert(seen.end(), {field, k == 0 ? 0.0 : slice.flux});
  }
  [[nodiscard]] SliceRequest required(int k) const override {
    SliceRequest request = {.E = k % 2 != 0};
    request.flux = true;
    request.first_row = 1;
    return request;
  }
  void finish() override { events_.emplace_back("close"); }
  SinkState save() override { return {}; }
  void restore(const SinkState& /*state*/) override {}

  std::vector<double> seen;

 private:
  Events& events_;
};

// Requires the whole field of slices 2 and 4.
class Keeper : public SliceObserver {
 public:
  bool requires_field(int k) override { return k == 2 || k == 4; }
  void slice_done(int k, const Slice& slice, const StepResult& /*step*/) override {
    if (requires_field(k)) seen.insert(seen.end(), {slice.E[0].real(), slice.E[1].real()});
  }
  std::vector<double> seen;
};

struct Outcome {
  Events events;
  std::vector<double> taken, kept;
  double taken_by_mask = 0;
  std::string verdict;
  PropagationTotals totals;
};

struct Settings {
  int nz = 5;
  bool on_device = false;
  bool are_kept = false;
  int after = kFromTheEntry;
  double screen = 2.0;
};

Outcome propagated(const Settings& settings) {
  Outcome outcome;
  Times host(outcome.events);
  TimesOnDevice device(outcome.events);
  TwoSlices slices(outcome.events, settings.on_device ? &device : nullptr, settings.are_kept,
                   std::max(settings.after, 0));
  Stepper& stepper = settings.on_device ? static_cast<Stepper&>(device) : host;
  Second sink(outcome.events);
  Screen screen(settings.screen);
  Halving halving(outcome.events);
  Keeper keeper;
  FieldCheck check(kSamples);
  FieldMask* masks[] = {&screen, &halving};
  Sink* sinks[] = {&sink};
  SliceObserver* observers[] = {&keeper, &check};
  propagate(grid_of(settings.nz), slices, stepper, masks, sinks, observers, settings.after,
            outcome.totals);
  outcome.taken = sink.seen;
  outcome.kept = keeper.seen;
  outcome.taken_by_mask = halving.taken;
  outcome.verdict = check.verdict();
  return outcome;
}

// Slice k has index k + 1 and is halved: 1, 1, 1.5, 3 doubled, 15.
TEST(Propagate, GivesTheSameSlicesOnHostAndDevice) {
  for (const bool on_device : {false, true}) {
    for (const bool are_kept : {false, true}) {
      const Outcome outcome = propagated({.on_device = on_device, .are_kept = are_kept});
      EXPECT_EQ(outcome.taken, (std::vector<double>{0, 0, 1, 10, 0, 10, 6, 10, 0, 10}));
      EXPECT_EQ(outcome.kept, (std::vector<double>{1.5, 1.5, 15, 15}));
      EXPECT_EQ(outcome.verdict, "");
      // 2 * 3/4 of the squares before halving: 2, 3, 12, 30.
      EXPECT_EQ(outcome.taken_by_mask, 1.5 * (4 + 9 + 144 + 900));
      EXPECT_EQ(outcome.totals.transforms, 4);
      EXPECT_EQ(outcome.totals.error, 0.25);
    }
    // After slice 2, whose field is 1 here.
    const Outcome rest = propagated({.on_device = on_device, .after = 2});
    EXPECT_EQ(rest.taken, (std::vector<double>{4, 10, 0, 10}));
    EXPECT_EQ(rest.kept, (std::vector<double>{10, 10}));
    for (const int nz : {0, 1})
      EXPECT_EQ(propagated({.nz = nz, .on_device = on_device}).taken.size(),
                2U * static_cast<unsigned>(nz));
    // The stepper's state of a slice is no longer true after a mask changed the slice.
    const Outcome dark = propagated({.on_device = on_device, .screen = 0.0});
    EXPECT_TRUE(dark.verdict.starts_with("the field is zero from slice 3 on")) << dark.verdict;
  }
}

// A step on the host is handed over as soon as it is made: a stopped run loses none. During a step
// on a device, the loop hands over the slice before, paints the slice after and prefetches its
// step. Several masks are applied on the host, and the field goes back.
TEST(Propagate, WorksDuringAStepOfADevice) {
  EXPECT_EQ(propagated({.nz = 3}).events,
            (Events{"paint 0", "take 0", "paint 1", "step", "halve 1", "take 1", "paint 2", "step",
                    "halve 2", "take 2", "close"}));
  const Outcome on_device = propagated({.on_device = true});
  EXPECT_EQ(on_device.events, (Events{"paint 0",
                                      "paint 1",
                                      "prefetch 1 2",
                                      "start from the host",
                                      "take 0",
                                      "paint 2",
                                      "prefetch 2 3",
                                      "wait",
                                      "start",
                                      "take 1",
                                      "paint 3",
                                      "prefetch 3 4",
                                      "wait",
                                      "start",
                                      "take 2",
                                      "fetch",
                                      "paint 4",
                                      "prefetch 4 5",
                                      "wait",
                                      "halve 3",
                                      "start from the host",
                                      "take 3",
                                      "wait",
                                      "take 4",
                                      "fetch",
                                      "close"}));
  EXPECT_NEAR(on_device.totals.steps, 4000, 1);
}

// A sink that only requires.
class Requiring : public Sink {
 public:
  explicit Requiring(const SliceRequest& parts) : request_(parts) {}
  void take(int /*k*/, const Slice& /*slice*/) override {}
  [[nodiscard]] SliceRequest required(int k) const override {
    return k == 1 ? request_ : SliceRequest{};
  }
  SinkState save() override { return {}; }
  void restore(const SinkState& /*state*/) override {}

 private:
  SliceRequest request_;
};

TEST(Sinks, TogetherRequireTheRectangleAroundAll) {
  Grid grid;
  grid.nx = 9, grid.ny = 7;
  Requiring some({.E = true, .first_row = 3, .end_row = 5, .first_column = 1, .end_column = 4});
  Requiring others({.N = true, .flux = true, .first_row = 2, .end_row = 3, .first_column = 6});
  Requiring sum({.flux = true});
  for (const auto& sinks : {std::vector<Sink*>{&some, &others, &sum}, {&sum, &others, &some}}) {
    const SliceRequest all = required_by(sinks, 1, grid);
    EXPECT_TRUE(all.E && !all.F && all.N && all.flux);
    EXPECT_EQ((std::array{all.first_row, all.end_row, all.first_column, all.end_column}),
              (std::array{2, 5, 1, 9}));
    const SliceRequest nothing = required_by(sinks, 2, grid);
    EXPECT_FALSE(nothing.E || nothing.F || nothing.N || nothing.flux);
  }
}

}  // namespace
