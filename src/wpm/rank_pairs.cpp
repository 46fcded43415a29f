#include "wpm/rank_pairs.h"

#include <cstring>

#include "ranks/ranks.h"
#include "wpm/windows.h"

namespace wpm {
namespace {

constexpr std::uint32_t kNone = 0xffffffffU;

// Columns as rows.
Grid turned_grid(const Grid& grid) {
  Grid turned = grid;
  turned.nx = grid.ny;
  turned.ny = window_of_rank(grid).columns();
  return turned;
}

}  // namespace

RankPairs::RankPairs(const Grid& grid)
    : columns_(window_of_rank(grid).columns()), ny_(grid.ny), own_(turned_grid(grid)) {}

Slice RankPairs::turned(const Slice& slice, std::vector<cpx>& N) const {
  N.resize(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(ny_));
  turn(slice.N, ny_, columns_, N.data());
  return {nullptr, nullptr, N.data(), slice.stretch};
}

// Stretches have the same numbers on all ranks, so all look at a step or none does.
void RankPairs::find(const Slice& from, const Slice& to) {
  const bool is_known =
      from.stretch >= 0 && from.stretch == from_ && to.stretch >= 0 && to.stretch == to_;
  if (is_known) return;
  // Mostly the slice that was stepped to is the one that is stepped from, and looked at already.
  const bool is_last_known = from.stretch >= 0 && from.stretch == to_;
  from_ = from.stretch;
  to_ = to.stretch;
  own_.find(is_last_known ? Slice{nullptr, nullptr, nullptr, from.stretch} : turned(from, N_from_),
            turned(to, N_to_));
  share_pairs();
}

void RankPairs::share_pairs() {
  const std::vector<IndexPair>& mine = own_.pairs();
  const std::string bytes = ranks::from_all(
      {reinterpret_cast<const char*>(mine.data()), mine.size() * sizeof(IndexPair)});
  pairs_.clear();
  PairTable places;
  for (std::size_t at = 0; at < bytes.size(); at += sizeof(IndexPair)) {
    IndexPair pair;
    std::memcpy(static_cast<void*>(&pair), bytes.data() + at, sizeof pair);
    places.place_of(pair, pairs_);
  }
  own_number_.assign(pairs_.size(), kNone);
  for (std::uint32_t own = 0; own < mine.size(); ++own)
    own_number_[places.place_of(mine[own], pairs_)] = own;
}

std::span<const Run> RankPairs::in_group(int group, std::uint32_t pair) const {
  if (own_number_[pair] == kNone) return {};
  return own_.in_group(group, own_number_[pair]);
}

}  // namespace wpm
