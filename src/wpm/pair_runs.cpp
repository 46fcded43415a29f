#include "wpm/pair_runs.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "ranks/ranks.h"
#include "wpm/batches.h"
#include "wpm/loops.h"
#include "wpm/repeated_addition.h"
#include "wpm/threads.h"

namespace wpm {

void IndexRuns::find(const Slice& slice, int ny, int nx) {
  if (slice.segment >= 0 && slice.segment == segment) return;
  segment = slice.segment;
  rows.resize(static_cast<std::size_t>(ny));
  constexpr double kSample = 0.4;  // ns
  share_out(groups_of(ny), kSample * nx * ny, [&](int group, int /*worker*/) {
    for (int j = group * kBatch; j < group * kBatch + lines_of_group(ny, group); ++j) {
      const cpx* row = slice.N + static_cast<std::size_t>(j) * static_cast<std::size_t>(nx);
      auto& runs = rows[static_cast<std::size_t>(j)];
      runs.clear();
      for (int end = 0; end < nx;) {
        const cpx& n = row[end];
        end += length_of_run(nx - end, row + end);
        runs.push_back({end, n});
      }
    }
  });
}

PairRuns::PairRuns(const Grid& grid) : nx_(grid.nx), ny_(ranks::share(grid.ny).size()) {}

namespace {

// In the order in which they stand; by insertion where they are few, which needs no memory.
void sort_by_pair(std::vector<Run>::iterator begin, std::vector<Run>::iterator end) {
  constexpr std::ptrdiff_t kFew = 64;
  const auto by_pair = [](const Run& a, const Run& b) { return a.pair < b.pair; };
  if (end - begin > kFew) {
    if (!std::is_sorted(begin, end, by_pair)) std::stable_sort(begin, end, by_pair);
    return;
  }
  for (auto run = begin; run != end; ++run)
    std::rotate(std::upper_bound(begin, run, *run, by_pair), run, run + 1);
}

}  // namespace

std::uint32_t PairRuns::place_of(const IndexPair& pair) {
  // A few pairs are compared faster than hashed.
  constexpr std::size_t kFew = 8;
  if (pairs_.size() <= kFew)
    for (std::uint32_t place = 0; place < pairs_.size(); ++place)
      if (same_bits(pairs_[place], pair)) return place;
  return places_.place_of(pair, pairs_);
}

bool PairRuns::find(const Slice& from, const Slice& to) {
  const bool is_known = from.segment >= 0 && from.segment == from_.segment && to.segment >= 0 &&
                        to.segment == to_.segment;
  if (is_known) return false;
  // Mostly the slice that was stepped to is the one that is stepped from.
  std::swap(from_, to_);
  from_.find(from, ny_, nx_);
  to_.find(to, ny_, nx_);

  pairs_.clear();
  places_.clear();
  runs_.clear();
  in_order_.clear();
  group_begin_.assign(1, 0);
  for (int group = 0; group < groups_of(ny_); ++group) {
    for (int row = group * kBatch; row < group * kBatch + lines_of_group(ny_, group); ++row) {
      auto i = from_.rows[static_cast<std::size_t>(row)].begin();
      auto t = to_.rows[static_cast<std::size_t>(row)].begin();
      for (int begin = 0; begin < nx_;) {
        const int end = std::min(i->end, t->end);
        const std::uint32_t pair = place_of({i->n, t->n});
        runs_.push_back({pair, row, begin, end});
        if (in_order_.empty() || in_order_.back().pair != pair) in_order_.push_back({pair, 0});
        in_order_.back().samples += static_cast<std::uint64_t>(end - begin);
        if (i->end == end) ++i;
        if (t->end == end) ++t;
        begin = end;
      }
    }
    sort_by_pair(runs_.begin() + static_cast<std::ptrdiff_t>(group_begin_.back()), runs_.end());
    group_begin_.push_back(runs_.size());
  }
  if (ranks::count() > 1) share_pairs();
  return true;
}

// Rows follow one another in the order of the ranks, and so do the pairs.
void PairRuns::share_pairs() {
  const std::vector<IndexPair> own = pairs_;
  const std::string bytes =
      ranks::from_all({reinterpret_cast<const char*>(own.data()), own.size() * sizeof(IndexPair)});
  pairs_.clear();
  places_.clear();
  for (std::size_t at = 0; at < bytes.size(); at += sizeof(IndexPair)) {
    IndexPair pair;
    std::memcpy(static_cast<void*>(&pair), bytes.data() + at, sizeof pair);
    places_.place_of(pair, pairs_);
  }
  std::vector<std::uint32_t> place;
  place.reserve(own.size());
  for (const IndexPair& pair : own) place.push_back(places_.place_of(pair, pairs_));
  for (Run& run : runs_) run.pair = place[run.pair];
  for (Alike& alike : in_order_) alike.pair = place[alike.pair];
  for (std::size_t group = 0; group + 1 < group_begin_.size(); ++group)
    sort_by_pair(runs_.begin() + static_cast<std::ptrdiff_t>(group_begin_[group]),
                 runs_.begin() + static_cast<std::ptrdiff_t>(group_begin_[group + 1]));
}

std::span<const Run> PairRuns::in_group(int group) const {
  const std::size_t begin = group_begin_[static_cast<std::size_t>(group)];
  return {runs_.data() + begin, group_begin_[static_cast<std::size_t>(group) + 1] - begin};
}

std::span<const Run> PairRuns::in_group(int group, std::uint32_t pair) const {
  const std::span<const Run> runs = in_group(group);
  const auto [begin, end] =
      std::equal_range(runs.begin(), runs.end(), Run{pair, 0, 0, 0},
                       [](const Run& a, const Run& b) { return a.pair < b.pair; });
  return {begin, end};
}

void PairRuns::places(std::uint32_t* of_samples) const {
  for (const Alike& alike : in_order_)
    of_samples = std::fill_n(of_samples, alike.samples, alike.pair);
}

double PairRuns::sum_of(std::span<const double> number_of_pair) const {
  double sum = 0.0;
  for (const Alike& alike : in_order_)
    sum = add_repeatedly(sum, number_of_pair[alike.pair], alike.samples);
  return sum;
}

}  // namespace wpm
