#include "wpm/repeated_addition.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace wpm {
namespace {

constexpr std::uint64_t kExponent = 0x7ff0000000000000U;
constexpr std::uint64_t kOne = 0x0010000000000000U;  // of the exponent

// How many more times term is sure to move the sum by that number.
double sure_steps(double sum, double term, double next, double moved) {
  const std::uint64_t exponent = std::bit_cast<std::uint64_t>(sum) & kExponent;
  if (!(term >= 0.0 && sum > 0.0) || exponent <= 53 * kOne || exponent >= kExponent - kOne)
    return 0.0;
  const auto half_unit = std::bit_cast<double>(exponent - 53 * kOne);
  const auto top = std::bit_cast<double>(exponent + kOne);
  // Half way between two numbers, which one is next depends on the sum.
  if (std::fabs(term - moved) >= half_unit || next > top) return 0.0;
  if (moved == 0.0) return HUGE_VAL;
  return std::floor((top - sum) / moved) - 1.0;
}

}  // namespace

double add_repeatedly(double sum, double term, std::uint64_t count) {
  while (count > 0) {
    const double next = sum + term;
    const double moved = next - sum;
    const double sure = std::min(sure_steps(sum, term, next, moved), static_cast<double>(count));
    if (sure > 1.0) {
      sum += sure * moved;
      count -= static_cast<std::uint64_t>(sure);
    } else {
      sum = next;
      --count;
    }
  }
  return sum;
}

}  // namespace wpm
