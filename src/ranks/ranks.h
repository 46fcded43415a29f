// What the ranks of a run do together. Ranks are the processes that mpirun starts; each owns a
// range of the rows of every slice. Without MPI, or started alone, a process is the one rank there
// is, and everything here returns what it is given.
//
// Unless it says otherwise, a function must be called by all ranks, in the same order.
#pragma once

#include <complex>
#include <cstddef>
#include <exception>
#include <string>

namespace ranks {

// Whether a launcher started this process, alone or with others: its variables are in the
// environment.
bool has_launcher();

// How many processes a launcher started together with this one, itself included; 1 without a
// launcher, or if it does not give their number.
int launched();

// Whether this process answers for those started together: a build without MPI always does, one
// with MPI if it is the first.
bool answers_for_all();
bool is_first_launched();

// Joins the ranks; before it there is one. A process without a launcher does not open MPI. A build
// without MPI throws Error if a launcher started it as one of several.
void join(int& argc, char**& argv);

// main calls it last and returns what it returns, the status. With status 0 it waits for the others
// to end too; with any other it ends them.
int leave(int status);

// Throws Error, why in its message, if a launcher started it as one of several; what does
// not join them calls it.
void require_alone(const std::string& why);

// Ends the process with a message if another of those started together works in the same folder,
// where it would write the same files. The folder stays locked until this process ends.
void require_own_folder();

int count();
int mine();  // 0 to count() - 1
// Rank 0: it alone writes the log, warnings and files.
inline bool is_first() {
  return mine() == 0;
}

// Lines of a slice are shared out in groups of this many, the number that transforms take at a
// time.
constexpr int kGroup = 8;
constexpr int groups_of(int lines) {
  return (lines + kGroup - 1) / kGroup;
}

// The lines that a rank owns of n: whole groups in the ranks' order. Numbers of groups differ by
// one at most; the last group may be smaller. With more ranks than groups some ranks own none.
struct Share {
  int begin = 0, end = 0;
  [[nodiscard]] int size() const { return end - begin; }
  [[nodiscard]] bool holds(int line) const { return line >= begin && line < end; }
};
Share share_of(int n, int rank, int ranks);
inline Share share_of(int n, int rank) {
  return share_of(n, rank, count());
}
inline Share share(int n) {
  return share_of(n, mine());
}

// Returns when all have come.
void meet();

// Does work on the first rank, then on the others: what is wrong for all alike, such as a file that
// cannot be read, ends the run before a second one reports it.
template <typename Work>
auto after_first(Work work) {
  struct Turn {
    Turn() {
      if (!is_first()) meet();
    }
    ~Turn() {
      if (is_first() && std::uncaught_exceptions() == before) meet();
    }
    int before = std::uncaught_exceptions();
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

// Of n shared lines of line_bytes bytes each, those in wanted, to all on the first rank. mine: the
// rank's own lines. all is not read where it is not written.
void gather_lines(const void* mine, void* all, int n, Share wanted, std::size_t line_bytes);
// All lines on every rank.
void gather_lines_everywhere(const void* mine, void* all, int n, std::size_t line_bytes);
// The way back: all is read on the first rank.
void scatter_lines(const void* all, void* mine, int n, std::size_t line_bytes);

// Blocks of kGroup x kGroup values, one for each group of rows and of columns, go from the ranks
// that own the rows to those that own the columns. Columns of blocks are from_step and to_step
// values apart.
//   from  [groups of columns][own groups of rows]
//   to    [own groups of columns][groups of rows]
// A single rank needs no exchange and must not call it.
void transpose(int rows, int columns, const std::complex<double>* from, std::size_t from_step,
               std::complex<double>* to, std::size_t to_step);

}  // namespace ranks
