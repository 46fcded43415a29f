#include "wpm/index_pairs.h"

#include <array>
#include <bit>
#include <cstring>
#include <unordered_map>

namespace {

bool same_bits(const cpx& a, const cpx& b) {
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): representations are what is compared
  return std::memcmp(&a, &b, sizeof(cpx)) == 0;
}

using PairBits = std::array<std::uint64_t, 4>;

PairBits bits_of(const cpx& n_i, const cpx& n_t) {
  return {std::bit_cast<std::uint64_t>(n_i.real()), std::bit_cast<std::uint64_t>(n_i.imag()),
          std::bit_cast<std::uint64_t>(n_t.real()), std::bit_cast<std::uint64_t>(n_t.imag())};
}

}  // namespace

std::size_t HashBits::operator()(const IndexPair& pair) const {
  std::uint64_t hash = 0;
  for (const std::uint64_t word : bits_of(pair.n_i, pair.n_t)) {  // multiply and fold
    hash = (hash ^ word) * 0x9e3779b97f4a7c15U;
    hash ^= hash >> 32U;
  }
  return hash;
}

void find_index_pairs(const cpx* N_i, const cpx* N_t, std::size_t count, IndexPairs& found) {
  found.pairs.clear();
  found.which.resize(count);
  std::unordered_map<IndexPair, std::uint32_t, HashBits, SameBits> place_of;
  std::uint32_t place = 0;
  for (std::size_t s = 0; s < count; ++s) {
    // Neighbours are mostly alike.
    const bool is_like_last =
        s > 0 && same_bits(N_i[s], N_i[s - 1]) && same_bits(N_t[s], N_t[s - 1]);
    if (!is_like_last) {
      const auto next = static_cast<std::uint32_t>(found.pairs.size());
      const auto [entry, is_new] = place_of.try_emplace(IndexPair{N_i[s], N_t[s]}, next);
      if (is_new) found.pairs.push_back({N_i[s], N_t[s]});
      place = entry->second;
    }
    found.which[s] = place;
  }
}
