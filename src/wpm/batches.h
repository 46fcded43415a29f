// Transforms of eight lines at a time, and the plane through which lines become columns.
#pragma once

#include <fftw3.h>

#include <cstring>
#include <memory>
#include <vector>

#include "many1d.h"
#include "ranks/ranks.h"
#include "system/system.h"
#include "wpm/axis.h"

namespace wpm {

// Lines are handled in groups of this many.
constexpr int kBatch = ranks::kGroup;
using ranks::groups_of;

// Group number place in an order in which each is followed by the one that holds its mirror images:
// threads that share out the places in runs share neither spectrum nor transfer functions.
constexpr int mirrored(int place, int groups) {
  return place % 2 == 0 ? place / 2 : groups - 1 - place / 2;
}
constexpr int lines_of_group(int n, int group) {
  return n - group * kBatch < kBatch ? n - group * kBatch : kBatch;
}

// Storage aligned for the transforms.
template <typename T>
struct AlignedDelete {
  void operator()(T* memory) const { fftw_free(memory); }
};
template <typename T>
using AlignedArray = std::unique_ptr<T[], AlignedDelete<T>>;

// count values of 0; ends the process with a message where there is no memory.
template <typename T>
AlignedArray<T> allocate_aligned(std::size_t count);

// The step between lines in a workspace: room for whole groups, kept out of each other's sets.
constexpr std::size_t line_step(int n) {
  return static_cast<std::size_t>(groups_of(n)) * static_cast<std::size_t>(kBatch) + 4;
}

// A plane on its way from lines in one direction to lines in the other: a writer brings eight
// lines, a reader takes eight of the others. It consists of blocks of 8 x 8 values; those of a
// reader follow one another: the reader reads one long run of memory, also what another core has
// just written, and transforms it in place. Padded, so that a writer's blocks do not share cache
// sets. Ranks own writers and readers as they own lines; one rank reads where it has written.
class TurningPlane {
 public:
  // Of written_lines lines of read_lines values each, of all ranks; zeros.
  TurningPlane(int written_lines, int read_lines);

  // The block of one of the rank's own writers and any reader, [line of the writer][line of the
  // reader]. The blocks of a writer are block_step() apart.
  [[nodiscard]] cpx* block(int writer, int reader) {
    return written_.values.get() + static_cast<std::size_t>(reader) * written_.step +
           static_cast<std::size_t>(writer) * kBatch * kBatch;
  }
  [[nodiscard]] std::size_t block_step() const { return written_.step; }
  // Brings what is written to the ranks that read it. For all ranks to call.
  void exchange();
  // The lines of one of the rank's own readers, side by side: [value][line].
  [[nodiscard]] cpx* lines(int reader) {
    Blocks& blocks = ranks::count() == 1 ? written_ : read_;
    return blocks.values.get() + static_cast<std::size_t>(reader) * blocks.step;
  }

 private:
  struct Blocks {
    Blocks(int writers, int readers);
    std::size_t step;  // from reader to reader
    AlignedArray<cpx> values;
  };
  int written_lines_, read_lines_;
  Blocks written_, read_;
};

// What a thread works in: eight lines each of the input and the output of a transform, and of its
// companion in single precision.
struct Workspace {
  explicit Workspace(int longest);
  AlignedArray<cpx> in, out;
  AlignedArray<std::complex<float>> drift_in, drift_out;
};

// Inverse transforms of eight lines of a workspace, n samples each, and their companion.
std::unique_ptr<fftwpp::fft1d_many> inverse_of_lines(int n, Workspace& work);
std::unique_ptr<fftwpp::fft1f_many> drift_of_lines(int n, Workspace& work);

// What their loops take of an axis, for whole groups, so that they need no end of their own: each
// bin's number twice; -drift and drift of each sample.
std::vector<float> numbers_twice(const Axis& axis);
std::vector<double> drift_with_both_signs(const Axis& axis);

}  // namespace wpm
