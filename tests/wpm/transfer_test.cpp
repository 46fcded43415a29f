// The store of transfer functions.
#include <gtest/gtest.h>

#include "support/scene.h"
#include "wpm/axes.h"
#include "wpm/transfer.h"

namespace {

constexpr std::size_t kBytes = 5 * 4 * 24;  // of a transfer function at 8 x 6

class Store : public testing::Test {
 protected:
  static constexpr std::size_t kRoom = 3;
  Store()
      : scene(8, 6, 2, 0.3e-6, 0.2e-6, 0.25e-6, 1e-6),
        x(8),
        y(6),
        axes(scene.grid()),
        store(wpm::FoldedFrequencies(x, y, axes.KX.data(), axes.KY.data()), scene.options(),
              kRoom * kBytes + kBytes / 2) {}

  // A step of pairs first..first+count-1. Returns how many were computed.
  int step(int first, int count) {
    std::vector<IndexPair> pairs;
    for (int c = first; c < first + count; ++c) pairs.push_back({1.0 + 0.1 * c, 1.2});
    const int before = store.made();
    store.begin(pairs);
    wpm::Transfer exact;
    for (const IndexPair& pair : pairs) {
      wpm::find_transfer(pair, wpm::FoldedFrequencies(x, y, axes.KX.data(), axes.KY.data()),
                         scene.options(), exact);
      EXPECT_EQ(store.get(pair).field, exact.field);
      EXPECT_EQ(store.get(pair).flux, exact.flux);
    }
    return store.made() - before;
  }

  Scene scene;
  wpm::Axis x, y;
  wpm::Axes axes;
  wpm::TransferStore store;
};

TEST_F(Store, WorksOutAgainOnlyWhatItHasNoRoomFor) {
  EXPECT_EQ(step(0, 3), 3);
  EXPECT_EQ(step(0, 3), 0);
  // Five pairs, room for three: two are computed at each of two requests.
  EXPECT_EQ(step(0, 5), 4);
  EXPECT_EQ(step(0, 5), 4);
  // New pairs replace those that the step does not need.
  EXPECT_EQ(step(2, 3), 2);
  EXPECT_EQ(step(2, 3), 0);
}

}  // namespace
