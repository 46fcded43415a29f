#include "wpm/rolling_pair.h"

#include <algorithm>

#include "wpm/batches.h"
#include "wpm/threads.h"

namespace {

std::size_t place(int k) {
  return static_cast<std::size_t>(k % 2);
}

}  // namespace

RollingPair::RollingPair(const IndexStack& stack, const cpx* E0, const double* F0)
    : RollingPair(stack, Window::whole(stack.grid()), E0, F0) {}

RollingPair::RollingPair(const IndexStack& stack, const Window& window, const cpx* E0,
                         const double* F0, SliceDevice* device)
    : Slices(device), stack_(stack), window_(window) {
  const std::size_t plane = plane_of(stack.grid(), window);
  slices_[0].E.assign(E0, E0 + plane);
  slices_[0].F.assign(F0, F0 + plane);
  slices_[1].E.resize(plane);
  slices_[1].F.resize(plane);
  for (std::vector<cpx>& plane_of_index : index_) plane_of_index.resize(plane);
  stack_.paint(index_[0].data(), window_of(0));
}

Window RollingPair::window_of(int k) const {
  return {window_.y_begin, window_.y_end, k, k + 1};
}

// A slice that equals the one before it shares its index plane; another is painted into the free
// one.
void RollingPair::paint(int k) {
  const std::size_t last = slices_[place(k + 1)].index;
  std::size_t& mine = slices_[place(k)].index;
  mine = last;
  if (stack_.stretch(k) == stack_.stretch(k - 1)) return;
  mine = 1 - last;
  stack_.paint(index_[mine].data(), window_of(k));
}

// By the threads that a step's rows are shared out to, in the same runs: a large slice is then in
// their caches.
void RollingPair::clear(Buffers& slice) const {
  constexpr double kSample = 0.5;  // ns
  const int rows = window_.rows();
  const std::ptrdiff_t row_size = stack_.grid().nx;
  wpm::share_out(wpm::groups_of(rows), kSample * static_cast<double>(slice.E.size()),
                 [&](int group, int /*worker*/) {
                   const std::ptrdiff_t first = group * wpm::kBatch * row_size;
                   const std::ptrdiff_t count = wpm::lines_of_group(rows, group) * row_size;
                   std::fill_n(slice.E.begin() + first, count, 0.0);
                   std::fill_n(slice.F.begin() + first, count, 0.0);
                 });
}

Slice RollingPair::slice(int k, bool is_new) {
  Buffers& slice = slices_[place(k)];
  if (is_new && k != first_) {
    if (!is_async()) clear(slice);
    paint(k);
  }
  return {slice.E.data(), slice.F.data(), index_[slice.index].data(), stack_.stretch(k)};
}

void RollingPair::begin_at(int k, const cpx* E) {
  first_ = k;
  Buffers& slice = slices_[place(k)];
  std::copy(E, E + slice.E.size(), slice.E.begin());
  std::fill(slice.F.begin(), slice.F.end(), 0.0);
  slice.index = 0;
  stack_.paint(index_[0].data(), window_of(k));
}
