// Whether a field is still light: neither zero everywhere nor infinite nor NaN.
#pragma once

#include <string>

#include "wpm/march.h"

// Of count samples from E on. A zero everywhere is dark; one sample that is not finite decides.
Health health_of(const cpx* E, std::size_t count);

// Watches a run and keeps the first slice that is ill behind one that is well. A run that begins
// ill is not its business.
class HealthWatch : public SliceWatcher {
 public:
  explicit HealthWatch(const Grid& grid) : HealthWatch(grid.plane()) {}
  // Of slices of so many samples: where ranks have windows of a slice, all ranks watch together.
  explicit HealthWatch(std::size_t samples) : samples_(samples) {}
  void slice_done(int k, const Slice& slice) override;
  void look_at(int k, const cpx* E);

  // "", or what a user should hear: "the field is zero from slice 12 on".
  [[nodiscard]] std::string verdict() const;

 private:
  [[nodiscard]] bool is_decided() const {
    return found_ != Health::kLight || first_ != Health::kLight;
  }
  void judge(int k, Health health);

  std::size_t samples_;
  Health first_ = Health::kLight;
  Health found_ = Health::kLight;
  int where_ = 0;
};
