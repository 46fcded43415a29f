#include "wpm/health.h"

#include <bit>
#include <cstdint>

#include "ranks/ranks.h"

// By their bits, all samples without a branch: an exponent of all ones carries into the sign.
FieldState field_state(const cpx* E, std::size_t count) {
  constexpr std::uint64_t kSign = 1ULL << 63U, kExponent = 0x7ffULL << 52U, kOne = 1ULL << 52U;
  std::uint64_t light = 0;
  std::uint64_t infinite = 0;
  const auto* number = reinterpret_cast<const double*>(E);
  for (std::size_t a = 0; a < 2 * count; ++a) {
    const auto bits = std::bit_cast<std::uint64_t>(number[a]);
    light |= bits & ~kSign;
    infinite |= (bits & kExponent) + kOne;
  }
  if ((infinite & kSign) != 0) return FieldState::kNotFinite;
  return light != 0 ? FieldState::kLight : FieldState::kDark;
}

namespace {

// Of a slice, from what each rank has of it; of no samples it is dark.
FieldState of_all_ranks(FieldState mine) {
  if (ranks::any(mine == FieldState::kNotFinite)) return FieldState::kNotFinite;
  return ranks::all(mine == FieldState::kDark) ? FieldState::kDark : FieldState::kLight;
}

}  // namespace

void FieldCheck::slice_done(int k, const Slice& slice, const StepResult& step) {
  if (first_ != FieldState::kLight || found_ != FieldState::kLight) return;
  const FieldState state = of_all_ranks(step.state ? *step.state : field_state(slice.E, samples_));
  (k == 0 ? first_ : found_) = state;
  found_at_ = k;
}

std::string FieldCheck::verdict() const {
  if (found_ == FieldState::kLight) return "";
  return std::string("the field is ") + (found_ == FieldState::kDark ? "zero" : "not finite") +
         " from slice " + std::to_string(found_at_) + " on" +
         (found_ == FieldState::kDark
              ? "; plane waves below 0.0001 of the raw transform are dropped, so a field that is "
                "faint everywhere is lost: give [wave] a larger amp, or look for a slice of index 0"
              : "; look for a negative extinction (gain) or an index that is not a number");
}
