#include "wpm/index_pairs.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

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

void PairTable::clear() {
  // A table that one slice made large is not to be swept in every step behind it.
  slots_.assign(std::min(slots_.size(), std::bit_ceil(4 * used_ + 16)), 0);
  used_ = 0;
}

std::uint32_t PairTable::place_of(const IndexPair& pair, std::vector<IndexPair>& pairs) {
  if (2 * used_ >= slots_.size()) {
    slots_.assign(std::max<std::size_t>(64, 4 * slots_.size()), 0);
    for (std::uint32_t place = 0; place < used_; ++place) slot_of(pairs[place], pairs) = place + 1;
  }
  std::uint32_t& slot = slot_of(pair, pairs);
  if (slot == 0) {
    pairs.push_back(pair);
    slot = static_cast<std::uint32_t>(++used_);
  }
  return slot - 1;
}

std::uint32_t& PairTable::slot_of(const IndexPair& pair, const std::vector<IndexPair>& pairs) {
  const std::size_t last = slots_.size() - 1;
  std::size_t at = HashBits()(pair) & last;
  while (slots_[at] != 0 && !::same_bits(pairs[slots_[at] - 1], pair)) at = (at + 1) & last;
  return slots_[at];
}

void find_index_pairs(const cpx* N_i, const cpx* N_t, std::size_t count, IndexPairs& found) {
  found.pairs.clear();
  found.which.resize(count);
  PairTable table;
  std::uint32_t place = 0;
  for (std::size_t s = 0; s < count; ++s) {
    // Neighbours are mostly alike.
    const bool is_like_last =
        s > 0 && same_bits(N_i[s], N_i[s - 1]) && same_bits(N_t[s], N_t[s - 1]);
    if (!is_like_last) place = table.place_of({N_i[s], N_t[s]}, found.pairs);
    found.which[s] = place;
  }
}
