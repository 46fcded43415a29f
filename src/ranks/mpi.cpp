// Ranks by MPI, exchanges by FFTW's layer over it.
#include <fftw3-mpi.h>
#include <mpi.h>

#include <cstdlib>
#include <iostream>
#include <numeric>

#include "diagnostics.h"
#include "ranks/ranks.h"

namespace ranks {
namespace {

int ranks = 1;
int rank = 0;

// The one way out. A process that ends in an error, wherever it did, ends the others with it; they
// would wait for it for ever.
void leave(int status, void* /*unused*/) {
  std::cout.flush();
  if (status != 0 && ranks > 1)
    MPI_Abort(MPI_COMM_WORLD, status & 255);
  else
    MPI_Finalize();
}

// Counts and places of the ranks' lines.
struct Lines {
  explicit Lines(int lines, std::size_t line_bytes) {
    for (int r = 0; r < ranks; ++r) {
      counts.push_back(share_of(lines, r).size());
      places.push_back(share_of(lines, r).begin);
    }
    MPI_Type_contiguous(static_cast<int>(line_bytes), MPI_BYTE, &line);
    MPI_Type_commit(&line);
  }
  ~Lines() { MPI_Type_free(&line); }
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  [[nodiscard]] int mine() const { return counts[static_cast<std::size_t>(rank)]; }
  std::vector<int> counts, places;
  MPI_Datatype line = MPI_DATATYPE_NULL;
};

}  // namespace

void join(int& argc, char**& argv) {
  int given = 0;
  // Threads of a rank compute; one of them speaks to the others.
  MPI_Init_thread(&argc, &argv, MPI_THREAD_FUNNELED, &given);
  MPI_Comm_size(MPI_COMM_WORLD, &ranks);
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  on_exit(leave, nullptr);
  if (rank > 0) diagnostics::speak_as("rank " + std::to_string(rank));
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

void gather_lines(const void* mine, void* all, int lines, std::size_t line_bytes) {
  const Lines of(lines, line_bytes);
  MPI_Gatherv(mine, of.mine(), of.line, all, of.counts.data(), of.places.data(), of.line, 0,
              MPI_COMM_WORLD);
}

void gather_lines_everywhere(const void* mine, void* all, int lines, std::size_t line_bytes) {
  const Lines of(lines, line_bytes);
  MPI_Allgatherv(mine, of.mine(), of.line, all, of.counts.data(), of.places.data(), of.line,
                 MPI_COMM_WORLD);
}

void scatter_lines(const void* all, void* mine, int lines, std::size_t line_bytes) {
  const Lines of(lines, line_bytes);
  MPI_Scatterv(all, of.counts.data(), of.places.data(), of.line, mine, of.mine(), of.line, 0,
               MPI_COMM_WORLD);
}

struct Transpose::Inside {
  double* in = nullptr;
  double* out = nullptr;
  fftw_plan to_columns = nullptr, to_rows = nullptr;
};

// A complex number is a pair of real ones to FFTW's transposition. Its estimate is as fast as what
// it measures, which takes long where ranks share processors.
Transpose::Transpose(int rows, int columns) : inside_(std::make_unique<Inside>()) {
  static const bool is_begun = (fftw_mpi_init(), true);
  static_cast<void>(is_begun);
  constexpr std::ptrdiff_t kParts = 2;
  const std::ptrdiff_t row_block = block_of(rows, ranks);
  const std::ptrdiff_t column_block = block_of(columns, ranks);
  const auto size = [](std::ptrdiff_t n0, std::ptrdiff_t n1, std::ptrdiff_t b0, std::ptrdiff_t b1) {
    const std::ptrdiff_t n[] = {n0, n1};
    std::ptrdiff_t ignored[4];
    return fftw_mpi_local_size_many_transposed(2, n, kParts, b0, b1, MPI_COMM_WORLD, ignored,
                                               ignored + 1, ignored + 2, ignored + 3);
  };
  const std::ptrdiff_t reals = std::max(size(rows, columns, row_block, column_block),
                                        size(columns, rows, column_block, row_block));
  const auto count = static_cast<std::size_t>(std::max<std::ptrdiff_t>(reals, 2));
  inside_->in = fftw_alloc_real(count);
  inside_->out = fftw_alloc_real(count);
  if (inside_->in == nullptr || inside_->out == nullptr)
    diagnostics::fail("no memory for this rank's part of a slice, " +
                      std::to_string(2 * count * sizeof(double)) +
                      " bytes; use more ranks on more machines");
  const auto plan = [&](std::ptrdiff_t n0, std::ptrdiff_t n1, std::ptrdiff_t b0,
                        std::ptrdiff_t b1) {
    return fftw_mpi_plan_many_transpose(n0, n1, kParts, b0, b1, inside_->in, inside_->out,
                                        MPI_COMM_WORLD, FFTW_ESTIMATE | FFTW_DESTROY_INPUT);
  };
  inside_->to_columns = plan(rows, columns, row_block, column_block);
  inside_->to_rows = plan(columns, rows, column_block, row_block);
  if (inside_->to_columns == nullptr || inside_->to_rows == nullptr)
    diagnostics::fail("FFTW has no plan for the exchange of a slice of " + std::to_string(rows) +
                      " x " + std::to_string(columns) + " samples over " + std::to_string(ranks) +
                      " ranks");
}

Transpose::~Transpose() {
  fftw_destroy_plan(inside_->to_columns);
  fftw_destroy_plan(inside_->to_rows);
  fftw_free(inside_->in);
  fftw_free(inside_->out);
}

std::complex<double>* Transpose::in() {
  return reinterpret_cast<std::complex<double>*>(inside_->in);
}
const std::complex<double>* Transpose::out() const {
  return reinterpret_cast<const std::complex<double>*>(inside_->out);
}
void Transpose::to_columns() {
  fftw_execute(inside_->to_columns);
}
void Transpose::to_rows() {
  fftw_execute(inside_->to_rows);
}

}  // namespace ranks
