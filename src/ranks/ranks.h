// What the ranks of a run do together. Ranks are the processes that mpirun starts; each owns a
// range of the columns of every slice. Without MPI, or started alone, a process is the one rank
// there is, and everything here passes through what it is given.
//
// Unless it says otherwise, a function must be called by all ranks, in the same order.
#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace ranks {

// Joins the ranks; before it there is one. From then on the end of the process is that of all: with
// status 0 it waits for the others to end too, with any other it ends them. A build without MPI
// ends with a message if a launcher started it as one of several.
void join(int& argc, char**& argv);

// Ends the process with a message, why in it, if a launcher started it as one of several; what does
// not join them calls it.
void require_alone(const std::string& why);

int count();
int mine();  // 0 to count() - 1
// Rank 0: it alone writes the log, warnings and files.
inline bool is_first() {
  return mine() == 0;
}

// The part of n things that a rank owns: blocks of one size in the ranks' order, the last one
// smaller; with more ranks than things, none.
struct Share {
  int begin = 0, end = 0;
  [[nodiscard]] int size() const { return end - begin; }
};
int block_of(int n, int ranks);
Share share_of(int n, int rank);
inline Share share(int n) {
  return share_of(n, mine());
}

// Returns when all have come.
void meet();

// Does work on the first rank, then on the others: what is wrong for all alike, such as a file that
// cannot be read, ends the run before a second one says so.
template <typename Work>
auto after_first(Work work) {
  struct Turn {
    Turn() {
      if (!is_first()) meet();
    }
    ~Turn() {
      if (is_first()) meet();
    }
  } turn;
  return work();
}

// --- Decisions that all must take alike

bool any(bool mine);
bool all(bool mine);
int most(int mine);
// The sums over all ranks of each of the values, added in the ranks' order: the same bits on all.
void sum(double* values, std::size_t count);
double sum(double value);

// --- From one to all, and from all

// What the first rank gives.
double from_first(double value);
std::string from_first(const std::string& text);
// What all give, in their order.
std::string from_all(const std::string& mine);

// lines lines of line_bytes bytes each, shared out: brings them together in all, on the first rank
// or on every one. all is not read where it is not written.
void gather_lines(const void* mine, void* all, int lines, std::size_t line_bytes);
void gather_lines_everywhere(const void* mine, void* all, int lines, std::size_t line_bytes);
// The way back: all is read on the first rank.
void scatter_lines(const void* all, void* mine, int lines, std::size_t line_bytes);

// A plane whose rows are shared out becomes one whose columns are: FFTW's own exchange. Memory: the
// two buffers, a rank's part of the plane each.
class Transpose {
 public:
  // Plans both ways; everything is planned on FFTW's side that is to be written to its wisdom
  // before. Ends the process if there is no memory.
  Transpose(int rows, int columns);
  ~Transpose();
  Transpose(const Transpose&) = delete;
  Transpose& operator=(const Transpose&) = delete;

  // Overwritten by an exchange.
  [[nodiscard]] std::complex<double>* in();
  [[nodiscard]] const std::complex<double>* out() const;

  void to_columns();  // in [my rows][columns] to out [my columns][rows]
  void to_rows();     // in [my columns][rows] to out [my rows][columns]

 private:
  struct Inside;
  std::unique_ptr<Inside> inside_;
};

}  // namespace ranks
