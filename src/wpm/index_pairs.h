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

// Places of pairs in a list of distinct ones. An open hash table: a random medium has a pair at
// each sample, and a table with memory for each entry would take longer than the sums.
class PairTable {
 public:
  void clear();
  // The place in pairs, which gets the pair at its end if it is new. The list is the same one from
  // clear to clear.
  std::uint32_t place_of(const IndexPair& pair, std::vector<IndexPair>& pairs);

 private:
  std::uint32_t& slot_of(const IndexPair& pair, const std::vector<IndexPair>& pairs);

  std::vector<std::uint32_t> slots_;  // a power of two of them, of place + 1; 0 is empty
  std::size_t used_ = 0;
};

struct IndexPairs {
  std::vector<IndexPair> pairs;      // distinct to the bit, in order of first appearance
  std::vector<std::uint32_t> which;  // of each sample, its place in pairs
};

// Finds those of the count samples from N_i and N_t on. Memory that found has is used again.
void find_index_pairs(const cpx* N_i, const cpx* N_t, std::size_t count, IndexPairs& found);
