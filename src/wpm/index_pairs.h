// The distinct pairs of indices at the samples of a step.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "wpm/modes.h"

// Equal to the bit: 0 and -0 differ, a NaN equals itself.
inline bool same_bits(const IndexPair& a, const IndexPair& b) {
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): representations are what is compared
  return std::memcmp(&a, &b, sizeof(IndexPair)) == 0;
}
struct SameBits {
  bool operator()(const IndexPair& a, const IndexPair& b) const { return same_bits(a, b); }
};
struct HashBits {
  std::size_t operator()(const IndexPair& pair) const;
};

struct IndexPairs {
  std::vector<IndexPair> pairs;      // distinct to the bit, in order of first appearance
  std::vector<std::uint32_t> which;  // of each sample, its place in pairs
};

// Finds those of the count samples from N_i and N_t on. Memory that found has is used again.
void find_index_pairs(const cpx* N_i, const cpx* N_t, std::size_t count, IndexPairs& found);
