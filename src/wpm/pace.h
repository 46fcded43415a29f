// How many threads the steps of a run take.
#pragma once

namespace wpm {

// Chooses between one thread and all by what steps of each took. Threads that have the machine to
// themselves and enough to do make steps shorter; those that share their cores with other programs,
// or are handed tiny planes, may make them longer. All are tried, then one, and the better goes on
// for a while: until it has become slower than the other was, or it is time to try both again.
//
//   pace.next(work);
//   ThreadLimit limit(pace.threads());
//   ... the step
//   pace.took(seconds);
class Pace {
 public:
  // Of at most that many threads.
  explicit Pace(int all) : all_(all) {}

  // Before each step. work: how much it has to do, above 0, in any unit.
  void next(double work) { work_ = work; }
  [[nodiscard]] int threads() const { return takes_all_ ? all_ : 1; }
  // After it, how long it took.
  void took(double seconds);

 private:
  struct Side {
    double seconds = 0, work = 0;
    int steps = 0;
    [[nodiscard]] bool is_known() const;
    [[nodiscard]] double of_work() const { return seconds / work; }
  };
  void add(Side& side, double seconds) const;
  void rest(double seconds);
  void end_trial(bool all_won);

  int all_;
  bool takes_all_ = true, is_trial_ = true, all_won_ = true;
  double work_ = 0;
  Side with_all_, with_one_;  // of the trial that goes on
  Side rest_;                 // since then
  double rests_ = 0;          // the last pause, in lengths of the trial before it
  double seconds_left_ = 0;   // to the next trial
  bool is_warm_ = false;      // the first step finds memory untouched and is not measured
};

}  // namespace wpm
