#include "wpm/health.h"

#include <bit>
#include <cstdint>

#include "ranks/ranks.h"

// By their bits, all samples without a branch: an exponent of all ones carries into the sign.
Health health_of(const cpx* E, std::size_t count) {
  constexpr std::uint64_t kSign = 1ULL << 63U, kExponent = 0x7ffULL << 52U, kOne = 1ULL << 52U;
  std::uint64_t light = 0;
  std::uint64_t infinite = 0;
  const auto* number = reinterpret_cast<const double*>(E);
  for (std::size_t a = 0; a < 2 * count; ++a) {
    const auto bits = std::bit_cast<std::uint64_t>(number[a]);
    light |= bits & ~kSign;
    infinite |= (bits & kExponent) + kOne;
  }
  if ((infinite & kSign) != 0) return Health::kNotFinite;
  return light != 0 ? Health::kLight : Health::kDark;
}

namespace {

// Of a slice, from what each rank has of it; of no samples it is dark.
Health of_all_ranks(Health mine) {
  if (ranks::any(mine == Health::kNotFinite)) return Health::kNotFinite;
  return ranks::all(mine == Health::kDark) ? Health::kDark : Health::kLight;
}

}  // namespace

void HealthWatch::slice_done(int k, const Slice& slice) {
  if (slice.health && !is_decided())
    judge(k, of_all_ranks(*slice.health));
  else
    look_at(k, slice.E);
}

void HealthWatch::look_at(int k, const cpx* E) {
  if (!is_decided()) judge(k, of_all_ranks(health_of(E, samples_)));
}

void HealthWatch::judge(int k, Health health) {
  if (k == 0) first_ = health;
  found_ = k == 0 ? Health::kLight : health;
  where_ = k;
}

std::string HealthWatch::verdict() const {
  if (found_ == Health::kLight) return "";
  return std::string("the field is ") + (found_ == Health::kDark ? "zero" : "not finite") +
         " from slice " + std::to_string(where_) + " on" +
         (found_ == Health::kDark
              ? "; plane waves below 0.0001 of the raw transform are dropped, so a field that is "
                "faint everywhere is lost: give [wave] a larger amp, or look for a slice of index 0"
              : "; look for a negative extinction (gain) or an index that is not a number");
}
