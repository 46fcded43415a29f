// Sums of terms of which many are the same.
#pragma once

#include <cstdint>

namespace wpm {

// sum + term + term and so on, count times, each addition rounded: the bits of the plain loop, in a
// few operations for each power of two that the sum passes. Between two of them the sum is a
// multiple of one unit in the last place, so that every addition moves it by the same number.
double add_repeatedly(double sum, double term, std::uint64_t count);

}  // namespace wpm
