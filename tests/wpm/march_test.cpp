// The loop over slices: who is called when, and that a stepper elsewhere gives the same slices.
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

// Two slices' worth of room, as a stream has; a slice that is painted is the index k + 1, and wrong
// numbers where E and F were.
class TwoSlices : public Slices {
 public:
  explicit TwoSlices(Events& events, bool are_kept) : events_(events), are_kept_(are_kept) {}
  Slice at(int k) override {
    events_.push_back("paint " + std::to_string(k));
    Room& room = rooms_[k % 2];
    room.E.fill(k == first_ ? 1.0 : -7.0);
    room.F.fill(-7.0);
    room.N.fill(k + 1.0);
    return {room.E.data(), room.F.data(), room.N.data(), k};
  }
  [[nodiscard]] bool are_kept() const override { return are_kept_; }
  void begin_at(int k) { first_ = k; }

 private:
  struct Room {
    std::array<cpx, kSamples> E, N;
    std::array<double, kSamples> F;
  };
  Events& events_;
  bool are_kept_;
  int first_ = 0;
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

// Halves what is left, behind every step.
class Halving : public FieldMask {
 public:
  explicit Halving(Events& events) : events_(events) {}
  void apply(int k, cpx* E) override {
    events_.push_back("halve " + std::to_string(k));
    for (int s = 0; s < kSamples; ++s) E[s] *= 0.5;
  }
  [[nodiscard]] bool covers(int k) const override { return k > 0; }

 private:
  Events& events_;
};

// Multiplies by the index behind the step. Elsewhere, it keeps the field to itself and brings it,
// or not, at the end.
class Times : public Stepper {
 public:
  Times(Events& events, bool is_elsewhere) : events_(events), is_elsewhere_(is_elsewhere) {}
  bool adopt(FieldMask& mask) override {
    const bool is_edge = is_elsewhere_ && dynamic_cast<Halving*>(&mask) != nullptr;
    has_edge_ = has_edge_ || is_edge;
    return is_edge;
  }
  void step(const Slice& from, const Slice& to) override {
    events_.emplace_back("step");
    for (int s = 0; s < kSamples; ++s) to.E[s] = from.E[s] * to.N[s], to.F[s] = 5;
  }
  void begin(const Slice& from, const Slice& to, const StepOrder& order) override {
    if (!is_elsewhere_) return Stepper::begin(from, to, order);
    events_.emplace_back(from.is_as_made ? "begin" : "begin from the host");
    parts_ = order.parts;
    last_ = here_;
    if (!from.is_as_made) last_ = from.E[1];
    here_ = last_ * to.N[1];
    made_ = to.E;
    if (order.is_masked && has_edge_) here_ *= 0.5;
  }
  void finish(Slice& to) override {
    if (!is_elsewhere_) return;
    events_.emplace_back("finish");
    if (parts_.E)
      for (int s = parts_.first_row; s < std::min(parts_.end_row, kSamples); ++s) to.E[s] = here_;
    if (parts_.F) std::fill_n(to.F, kSamples, 5.0);
    if (parts_.flux) to.flux = 5.0 * kSamples;
    if (parts_.health) to.health = Health::kLight;
    to.is_as_made = true;
  }
  void look_ahead(const Slice& from, const Slice& to) override {
    events_.push_back("look " + std::to_string(std::lround(from.N[0].real())) + " " +
                      std::to_string(std::lround(to.N[0].real())));
  }
  [[nodiscard]] bool is_elsewhere() const override { return is_elsewhere_; }
  [[nodiscard]] double seconds_between() const override { return is_elsewhere_ ? 1000.0 : 0.0; }
  void bring_field(const Slice& slice) override {
    if (is_elsewhere_ && slice.is_as_made)
      std::fill_n(slice.E, kSamples, slice.E == made_ ? here_ : last_);
  }
  [[nodiscard]] const char* sum_taken() const override { return "product"; }

 private:
  Events& events_;
  bool is_elsewhere_;
  bool has_edge_ = false;
  SliceParts parts_;
  cpx here_, last_;
  const cpx* made_ = nullptr;
};

// Looks at the second sample of every other slice, and at all sums.
class Second : public Sink {
 public:
  explicit Second(Events& events) : events_(events) {}
  void take(int k, const Slice& slice) override {
    const double flux = slice.flux.value_or(slice.F[0] + slice.F[1]);
    const double field = k % 2 != 0 ? slice.E[1].real() : 0.0;
    events_.push_back("take " + std::to_string(k));
    seen.insert(seen.end(), {field, k == 0 ? 0.0 : flux});
  }
  [[nodiscard]] SliceParts looks_at(int k) const override {
    SliceParts parts = {.E = k % 2 != 0};
    parts.flux = true;
    parts.first_row = 1;
    return parts;
  }
  void finish() override { events_.emplace_back("close"); }
  Mark mark() override { return {}; }
  void go_back_to(const Mark& /*mark*/) override {}

  std::vector<double> seen;

 private:
  Events& events_;
};

// Wants the whole field of slices 2 and 4.
class Keeper : public SliceWatcher {
 public:
  bool wants_field(int k) override { return k == 2 || k == 4; }
  void slice_done(int k, const Slice& slice) override {
    if (wants_field(k)) seen.insert(seen.end(), {slice.E[0].real(), slice.E[1].real()});
  }
  std::vector<double> seen;
};

struct Outcome {
  Events events;
  std::vector<double> taken, kept;
  std::string verdict;
  MarchTimes times;
};

struct Settings {
  int nz = 5;
  bool is_elsewhere = false;
  bool are_kept = false;
  int behind = kFromTheEntry;
  double screen = 2.0;
};

Outcome marched(const Settings& settings) {
  Outcome outcome;
  TwoSlices slices(outcome.events, settings.are_kept);
  slices.begin_at(std::max(settings.behind, 0));
  Times stepper(outcome.events, settings.is_elsewhere);
  Second sink(outcome.events);
  Screen screen(settings.screen);
  Halving halving(outcome.events);
  Keeper keeper;
  HealthWatch health(kSamples);
  FieldMask* masks[] = {&screen, &halving};
  Sink* sinks[] = {&sink};
  SliceWatcher* watchers[] = {&keeper, &health};
  march(grid_of(settings.nz), slices, stepper, masks, sinks, watchers, settings.behind,
        outcome.times);
  outcome.taken = sink.seen;
  outcome.kept = keeper.seen;
  outcome.verdict = health.verdict();
  return outcome;
}

// Slice k is painted with index k + 1, and halved: 1, 1, 1.5, 3 doubled, 15.
TEST(March, GivesTheSameSlicesWhereverStepsAreMade) {
  for (const bool is_elsewhere : {false, true}) {
    for (const bool are_kept : {false, true}) {
      const Outcome outcome = marched({.is_elsewhere = is_elsewhere, .are_kept = are_kept});
      EXPECT_EQ(outcome.taken, (std::vector<double>{0, 0, 1, 10, 0, 10, 6, 10, 0, 10}));
      EXPECT_EQ(outcome.kept, (std::vector<double>{1.5, 1.5, 15, 15}));
      EXPECT_EQ(outcome.verdict, "");
    }
    // Behind slice 2, of which the field is 1 here.
    const Outcome rest = marched({.is_elsewhere = is_elsewhere, .behind = 2});
    EXPECT_EQ(rest.taken, (std::vector<double>{4, 10, 0, 10}));
    EXPECT_EQ(rest.kept, (std::vector<double>{10, 10}));
    for (const int nz : {0, 1})
      EXPECT_EQ(marched({.nz = nz, .is_elsewhere = is_elsewhere}).taken.size(),
                2U * static_cast<unsigned>(nz));
    // What a stepper says of a slice is no longer true when a mask has been over it.
    const Outcome dark = marched({.is_elsewhere = is_elsewhere, .screen = 0.0});
    EXPECT_TRUE(dark.verdict.starts_with("the field is zero from slice 3 on")) << dark.verdict;
  }
}

// A step of the host is handed over as soon as it is made, so that a stopped run loses none. While
// one goes on elsewhere, the slice behind it is handed over, the one ahead is painted, and the
// stepper may look at it. A mask
// that is laid here has all masks of its slice laid here, and the field goes back.
TEST(March, WorksWhileAStepGoesOnElsewhere) {
  EXPECT_EQ(marched({.nz = 3}).events,
            (Events{"paint 0", "take 0", "paint 1", "step", "halve 1", "take 1", "paint 2", "step",
                    "halve 2", "take 2", "close"}));
  const Outcome elsewhere = marched({.is_elsewhere = true});
  EXPECT_EQ(elsewhere.events, (Events{"paint 0",
                                      "paint 1",
                                      "begin from the host",
                                      "take 0",
                                      "paint 2",
                                      "look 2 3",
                                      "finish",
                                      "begin",
                                      "take 1",
                                      "paint 3",
                                      "look 3 4",
                                      "finish",
                                      "begin",
                                      "take 2",
                                      "paint 4",
                                      "look 4 5",
                                      "finish",
                                      "halve 3",
                                      "begin from the host",
                                      "take 3",
                                      "finish",
                                      "take 4",
                                      "close"}));
  EXPECT_NEAR(elsewhere.times.steps, 4000, 1);
}

// A sink of nothing but what it looks at.
class Looking : public Sink {
 public:
  explicit Looking(const SliceParts& parts) : parts_(parts) {}
  void take(int /*k*/, const Slice& /*slice*/) override {}
  [[nodiscard]] SliceParts looks_at(int k) const override { return k == 1 ? parts_ : SliceParts{}; }
  Mark mark() override { return {}; }
  void go_back_to(const Mark& /*mark*/) override {}

 private:
  SliceParts parts_;
};

TEST(Sinks, TogetherLookAtTheRectangleThatHoldsAll) {
  Grid grid;
  grid.nx = 9, grid.ny = 7;
  Looking some({.E = true, .first_row = 3, .end_row = 5, .first_column = 1, .end_column = 4});
  Looking others({.N = true, .flux = true, .first_row = 2, .end_row = 3, .first_column = 6});
  Looking sum({.flux = true});
  for (const auto& sinks : {std::vector<Sink*>{&some, &others, &sum}, {&sum, &others, &some}}) {
    const SliceParts all = looked_at(sinks, 1, grid);
    EXPECT_TRUE(all.E && !all.F && all.N && all.flux);
    EXPECT_EQ((std::array{all.first_row, all.end_row, all.first_column, all.end_column}),
              (std::array{2, 5, 1, 9}));
    const SliceParts nothing = looked_at(sinks, 2, grid);
    EXPECT_FALSE(nothing.E || nothing.F || nothing.N || nothing.flux);
  }
}

}  // namespace
