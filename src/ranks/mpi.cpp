// Ranks by MPI.
#include <mpi.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <numeric>
#include <vector>

#include "diagnostics.h"
#include "ranks/ranks.h"

namespace ranks {
namespace {

int ranks = 1;
int rank = 0;

// Copies lines from and to the only rank.
void copy_lines(const void* from, void* to, Share wanted, std::size_t line_bytes) {
  std::memcpy(to,
              static_cast<const char*>(from) + static_cast<std::size_t>(wanted.begin) * line_bytes,
              static_cast<std::size_t>(wanted.size()) * line_bytes);
}

// Counts and displacements of the ranks' lines, and the offset of the first one that a rank sends.
struct Lines {
  Lines(int n, Share wanted, std::size_t line_bytes) {
    for (int r = 0; r < ranks; ++r) {
      const Share own = share_of(n, r);
      const int begin = std::clamp(own.begin, wanted.begin, wanted.end);
      counts.push_back(std::clamp(own.end, wanted.begin, wanted.end) - begin);
      places.push_back(begin - wanted.begin);
      if (r == rank && counts.back() > 0)
        offset = static_cast<std::size_t>(begin - own.begin) * line_bytes;
    }
    MPI_Type_contiguous(static_cast<int>(line_bytes), MPI_BYTE, &line);
    MPI_Type_commit(&line);
  }
  ~Lines() { MPI_Type_free(&line); }
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  [[nodiscard]] int mine() const { return counts[static_cast<std::size_t>(rank)]; }
  std::vector<int> counts, places;
  std::size_t offset = 0;  // bytes
  MPI_Datatype line = MPI_DATATYPE_NULL;
};

}  // namespace

void join(int& argc, char**& argv) {
  if (!has_launcher()) return;
  int given = 0;
  // Threads of a rank compute; one of them communicates.
  MPI_Init_thread(&argc, &argv, MPI_THREAD_FUNNELED, &given);
  MPI_Comm_size(MPI_COMM_WORLD, &ranks);
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
}

// After an error the other ranks would wait forever.
int leave(int status) {
  int is_joined = 0;
  MPI_Initialized(&is_joined);
  if (is_joined == 0) return status;
  std::cout.flush();
  if (status != 0 && ranks > 1)
    MPI_Abort(MPI_COMM_WORLD, status & 255);
  else
    MPI_Finalize();
  return status;
}

bool answers_for_all() {
  return is_first_launched();
}
int count() {
  return ranks;
}
int mine() {
  return rank;
}
void meet() {
  if (ranks > 1) MPI_Barrier(MPI_COMM_WORLD);
}

int most(int mine) {
  int result = mine;
  if (ranks > 1) MPI_Allreduce(&mine, &result, 1, MPI_INT, MPI_MAX, MPI_COMM_WORLD);
  return result;
}

std::string from_first(const std::string& text) {
  if (ranks == 1) return text;
  int size = static_cast<int>(text.size());
  MPI_Bcast(&size, 1, MPI_INT, 0, MPI_COMM_WORLD);
  std::string result = rank == 0 ? text : std::string(static_cast<std::size_t>(size), '\0');
  MPI_Bcast(result.data(), size, MPI_BYTE, 0, MPI_COMM_WORLD);
  return result;
}

std::string from_all(const std::string& mine) {
  if (ranks == 1) return mine;
  const int size = static_cast<int>(mine.size());
  std::vector<int> sizes(static_cast<std::size_t>(ranks));
  MPI_Allgather(&size, 1, MPI_INT, sizes.data(), 1, MPI_INT, MPI_COMM_WORLD);
  std::vector<int> places(sizes.size());
  std::exclusive_scan(sizes.begin(), sizes.end(), places.begin(), 0);
  std::string all(static_cast<std::size_t>(places.back() + sizes.back()), '\0');
  MPI_Allgatherv(mine.data(), size, MPI_BYTE, all.data(), sizes.data(), places.data(), MPI_BYTE,
                 MPI_COMM_WORLD);
  return all;
}

void gather_lines(const void* mine, void* all, int n, Share wanted, std::size_t line_bytes) {
  if (ranks == 1) {
    copy_lines(mine, all, wanted, line_bytes);
    return;
  }
  const Lines of(n, wanted, line_bytes);
  MPI_Gatherv(static_cast<const char*>(mine) + of.offset, of.mine(), of.line, all, of.counts.data(),
              of.places.data(), of.line, 0, MPI_COMM_WORLD);
}

void gather_lines_everywhere(const void* mine, void* all, int n, std::size_t line_bytes) {
  if (ranks == 1) {
    copy_lines(mine, all, {0, n}, line_bytes);
    return;
  }
  const Lines of(n, {0, n}, line_bytes);
  MPI_Allgatherv(mine, of.mine(), of.line, all, of.counts.data(), of.places.data(), of.line,
                 MPI_COMM_WORLD);
}

void scatter_lines(const void* all, void* mine, int n, std::size_t line_bytes) {
  if (ranks == 1) {
    copy_lines(all, mine, {0, n}, line_bytes);
    return;
  }
  const Lines of(n, {0, n}, line_bytes);
  MPI_Scatterv(all, of.counts.data(), of.places.data(), of.line, mine, of.mine(), of.line, 0,
               MPI_COMM_WORLD);
}

namespace {

constexpr std::size_t kBlock = std::size_t{kGroup} * kGroup;  // values

// A rectangle of blocks: columns of rows blocks each, step values apart.
class Blocks {
 public:
  Blocks(int columns, int rows, std::size_t step) {
    MPI_Type_create_hvector(columns, rows * static_cast<int>(kBlock),
                            static_cast<MPI_Aint>(step * sizeof(std::complex<double>)),
                            MPI_C_DOUBLE_COMPLEX, &type_);
    MPI_Type_commit(&type_);
  }
  ~Blocks() { MPI_Type_free(&type_); }
  Blocks(const Blocks&) = delete;
  Blocks& operator=(const Blocks&) = delete;
  [[nodiscard]] MPI_Datatype type() const { return type_; }

 private:
  MPI_Datatype type_ = MPI_DATATYPE_NULL;
};

}  // namespace

// Exchanges with every rank, itself first: in each turn a rank sends to one and receives from one.
void transpose(int rows, int columns, const std::complex<double>* from, std::size_t from_step,
               std::complex<double>* to, std::size_t to_step) {
  const int own_rows = groups_of(share(rows).size());
  const int own_columns = groups_of(share(columns).size());
  for (int turn = 0; turn < ranks; ++turn) {
    const int receiver = (rank + turn) % ranks;
    const int sender = (rank + ranks - turn) % ranks;
    const Share theirs = share_of(columns, receiver);
    const Share written = share_of(rows, sender);
    const Blocks sent(groups_of(theirs.size()), own_rows, from_step);
    const Blocks received(own_columns, groups_of(written.size()), to_step);
    MPI_Sendrecv(from + static_cast<std::size_t>(groups_of(theirs.begin)) * from_step, 1,
                 sent.type(), receiver, 0,
                 to + static_cast<std::size_t>(groups_of(written.begin)) * kBlock, 1,
                 received.type(), sender, 0, MPI_COMM_WORLD, MPI_STATUS_IGNORE);
  }
}

}  // namespace ranks
