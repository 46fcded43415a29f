// Operations of the ranks of a run. Ranks are the processes that mpirun starts; each owns a range
// of the rows of every slice. Without MPI, or started alone, a process is the only rank. Every
// function here then returns its input.
//
// Unless stated otherwise, all ranks must call a function, in the same order.
#pragma once

#include <complex>
#include <cstddef>
#include <exception>
#include <string>

namespace ranks {

// Whether a launcher started this process, alone or with others, by its environment variables.
bool has_launcher();

// The number of processes that a launcher started together, this one included. 1 without a
// launcher, or if it does not give the number.
int launched();

// Whether this process reports for all that were started together. A build without MPI always does;
// with MPI only the first does.
bool answers_for_all();
bool is_first_launched();

// Joins the ranks; before it there is one. A process without a launcher does not open MPI. A build
// without MPI throws Error if a launcher started it as one of several.
void join(int& argc, char**& argv);

// main calls it last and returns its result, the status. With status 0 it waits for the others to
// end. Any other status ends them.
int leave(int status);

// Throws Error, with why in its message, if a launcher started several processes. Code that does
// not join the ranks calls it.
void require_alone(const std::string& why);

// Throws Error if another process of the launcher works in the same folder and would write the same
// files. The folder stays locked until this process ends.
void require_own_folder();

int count();
int mine();  // 0 to count() - 1
// Rank 0: it alone writes the log, warnings and files.
inline bool is_first() {
  return mine() == 0;
}

// The number of lines in a group, as many as transforms take at a time. Groups of a slice's lines
// are distributed.
constexpr int kGroup = 8;
constexpr int groups_of(int lines) {
  return (lines + kGroup - 1) / kGroup;
}

// The lines of n that a rank owns: whole groups in the ranks' order. Numbers of groups differ by at
// most one; the last group may be smaller. With more ranks than groups some own none.
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

// Barrier: returns when all ranks have called it.
void meet();

// Does work on the first rank, then on the others. An error on all ranks, such as an unreadable
// file, thus ends the run before a second report.
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

// --- Decisions that must be equal on all ranks

bool any(bool mine);
bool all(bool mine);
int most(int mine);
// The sum of each value over all ranks, added in the ranks' order: bit-identical on all.
void sum(double* values, std::size_t count);
double sum(double value);

// --- Broadcast, gather, scatter

// The value of the first rank.
double from_first(double value);
std::string from_first(const std::string& text);
// The texts of all ranks, in their order.
std::string from_all(const std::string& mine);

// Gathers the lines in wanted, of n shared lines of line_bytes bytes each, into all on the first
// rank. mine: the rank's own lines. Other ranks do not use all.
void gather_lines(const void* mine, void* all, int n, Share wanted, std::size_t line_bytes);
// Gathers all lines on every rank.
void gather_lines_everywhere(const void* mine, void* all, int n, std::size_t line_bytes);
// The inverse: all is read on the first rank.
void scatter_lines(const void* all, void* mine, int n, std::size_t line_bytes);

// Sends blocks of kGroup x kGroup values from the owners of rows to the owners of columns. There is
// one for each group of rows and of columns. Columns of blocks are from_step and to_step values
// apart.
//   from  [groups of columns][own groups of rows]
//   to    [own groups of columns][groups of rows]
// A single rank needs no exchange and must not call it.
void transpose(int rows, int columns, const std::complex<double>* from, std::size_t from_step,
               std::complex<double>* to, std::size_t to_step);

}  // namespace ranks
