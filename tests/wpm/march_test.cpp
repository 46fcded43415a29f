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

// Multiplies by the index behind the step. Elsewhere, it keeps the field to itself and brings it,
// or not, at the end.
class Times : public Stepper {
 public:
  Times(Events& events, bool is_elsewhere) : events_(events), is_elsewhere_(is_elsewhere) {}
  void step(const Slice& from, const Slice& to) override {
    events_.emplace_back("step");
    for (int s = 0; s < kSamples; ++s) to.E[s] = from.E[s] * to.N[s], to.F[s] = 5;
  }
  void begin(const Slice& from, const Slice& to, const SliceParts& parts) override {
    if (!is_elsewhere_) return Stepper::begin(from, to, parts);
    events_.emplace_back(from.is_as_made ? "begin" : "begin from the host");
    parts_ = parts;
    last_ = here_;
    if (!from.is_as_made) last_ = from.E[1];
    here_ = last_ * to.N[1];
    made_ = to.E;
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

// Doubles slice 3.
class Doubling : public FieldMask {
 public:
  void apply(int /*k*/, cpx* E) override {
    for (int s = 0; s < kSamples; ++s) E[s] *= 2.0;
  }
  [[nodiscard]] bool covers(int k) const override { return k == 3; }
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
  MarchTimes times;
};

Outcome marched(int nz, bool is_elsewhere, bool are_kept = false, int behind = kFromTheEntry) {
  Outcome outcome;
  TwoSlices slices(outcome.events, are_kept);
  slices.begin_at(std::max(behind, 0));
  Times stepper(outcome.events, is_elsewhere);
  Second sink(outcome.events);
  Doubling doubling;
  Keeper keeper;
  FieldMask* masks[] = {&doubling};
  Sink* sinks[] = {&sink};
  SliceWatcher* watchers[] = {&keeper};
  march(grid_of(nz), slices, stepper, masks, sinks, watchers, behind, outcome.times);
  outcome.taken = sink.seen;
  outcome.kept = keeper.seen;
  return outcome;
}

// 1, 2, 6, then 24 doubled, 240: slice k is painted with index k + 1.
TEST(March, GivesTheSameSlicesWhereverStepsAreMade) {
  const std::vector<double> taken = {0, 0, 2, 10, 0, 10, 48, 10, 0, 10};
  const std::vector<double> kept = {6, 6, 240, 240};
  for (const bool is_elsewhere : {false, true})
    for (const bool are_kept : {false, true}) {
      const Outcome outcome = marched(5, is_elsewhere, are_kept);
      EXPECT_EQ(outcome.taken, taken) << is_elsewhere << are_kept;
      EXPECT_EQ(outcome.kept, kept) << is_elsewhere << are_kept;
    }
  // Behind slice 2, of which the field is 1 here.
  for (const bool is_elsewhere : {false, true}) {
    const Outcome outcome = marched(5, is_elsewhere, false, 2);
    EXPECT_EQ(outcome.taken, (std::vector<double>{8, 10, 0, 10})) << is_elsewhere;
    EXPECT_EQ(outcome.kept, (std::vector<double>{40, 40})) << is_elsewhere;
  }
  for (const int nz : {0, 1})
    EXPECT_EQ(marched(nz, true).taken.size(), 2U * static_cast<unsigned>(nz)) << nz;
}

// A step of the host is handed over as soon as it is made, so that a stopped run loses none. While
// one goes on elsewhere, the slice behind it is handed over and the one ahead is painted; what a
// mask has changed goes back.
TEST(March, WorksWhileAStepGoesOnElsewhere) {
  EXPECT_EQ(marched(3, false).events, (Events{"paint 0", "take 0", "paint 1", "step", "take 1",
                                              "paint 2", "step", "take 2", "close"}));
  const Outcome elsewhere = marched(5, true);
  EXPECT_EQ(elsewhere.events,
            (Events{"paint 0", "paint 1", "begin from the host", "take 0", "paint 2", "finish",
                    "begin", "take 1", "paint 3", "finish", "begin", "take 2", "paint 4", "finish",
                    "begin from the host", "take 3", "finish", "take 4", "close"}));
  EXPECT_NEAR(elsewhere.times.steps, 4000, 1);
}

// What a stepper says of a slice is believed, unless a mask has been over it.
TEST(March, WatchesTheHealthThatIsToldOrSeen) {
  HealthWatch watch(kSamples);
  std::vector<cpx> E(kSamples, 1.0);
  Slice slice = {E.data(), nullptr, nullptr};
  watch.slice_done(0, slice);
  slice.health = Health::kDark;
  watch.slice_done(1, slice);
  EXPECT_TRUE(watch.verdict().starts_with("the field is zero from slice 1 on")) << watch.verdict();
}

}  // namespace
