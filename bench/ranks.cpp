// mpirun -n N zerith-bench-ranks [SIDE]: a step of one field over N ranks, its time and the bytes
// that it exchanges, next to those that are predicted. With one rank also that of one process.
//
// Bytes are counted where they are handed to MPI, by whoever does: its profiling interface lets a
// program stand in front of its calls.
#include <mpi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "measure.h"
#include "ranks/ranks.h"
#include "wpm/windows.h"

namespace {

long long bytes_sent = 0;  // to other ranks

long long bytes_of(int count, MPI_Datatype type) {
  int size = 0;
  MPI_Type_size(type, &size);
  return static_cast<long long>(count) * size;
}

}  // namespace

extern "C" {
int MPI_Alltoall(const void* from, int count, MPI_Datatype type, void* to, int to_count,
                 MPI_Datatype to_type, MPI_Comm comm) {
  bytes_sent += bytes_of(count, type) * (ranks::count() - 1);
  return PMPI_Alltoall(from, count, type, to, to_count, to_type, comm);
}
int MPI_Alltoallv(const void* from, const int* counts, const int* places, MPI_Datatype type,
                  void* to, const int* to_counts, const int* to_places, MPI_Datatype to_type,
                  MPI_Comm comm) {
  for (int rank = 0; rank < ranks::count(); ++rank)
    if (rank != ranks::mine()) bytes_sent += bytes_of(counts[rank], type);
  return PMPI_Alltoallv(from, counts, places, type, to, to_counts, to_places, to_type, comm);
}
int MPI_Sendrecv(const void* from, int count, MPI_Datatype type, int rank, int tag, void* to,
                 int to_count, MPI_Datatype to_type, int source, int to_tag, MPI_Comm comm,
                 MPI_Status* status) {
  if (rank != ranks::mine()) bytes_sent += bytes_of(count, type);
  return PMPI_Sendrecv(from, count, type, rank, tag, to, to_count, to_type, source, to_tag, comm,
                       status);
}
int MPI_Allgather(const void* from, int count, MPI_Datatype type, void* to, int to_count,
                  MPI_Datatype to_type, MPI_Comm comm) {
  bytes_sent += bytes_of(count, type) * (ranks::count() - 1);
  return PMPI_Allgather(from, count, type, to, to_count, to_type, comm);
}
int MPI_Allgatherv(const void* from, int count, MPI_Datatype type, void* to, const int* to_counts,
                   const int* places, MPI_Datatype to_type, MPI_Comm comm) {
  bytes_sent += bytes_of(count, type) * (ranks::count() - 1);
  return PMPI_Allgatherv(from, count, type, to, to_counts, places, to_type, comm);
}
int MPI_Allreduce(const void* from, void* to, int count, MPI_Datatype type, MPI_Op op,
                  MPI_Comm comm) {
  bytes_sent += bytes_of(count, type) * (ranks::count() - 1);
  return PMPI_Allreduce(from, to, count, type, op, comm);
}
}

namespace {

constexpr int kSlices = 4;
constexpr int kPairs = 3;  // of growing_guide
constexpr int kRuns = 5;

// The steps of a scene by a stepper, on the rank's columns.
class Steps {
 public:
  Steps(const Scene& scene, CpuStepper& stepper, const Window& window)
      : scene_(scene), stepper_(stepper), window_(window) {
    for (int k = 0; k < kSlices; ++k)
      for (int j = 0; j < scene.ny; ++j)
        for (int i = window.x_begin; i < window.x_end; ++i)
          N_.push_back(scene.N[scene.index(k, j, i)]);
    plane_ = N_.size() / kSlices;
    E_.resize(N_.size());
    F_.resize(N_.size());
  }
  void operator()() {
    std::fill(E_.begin(), E_.end(), 0.0);
    std::size_t s = 0;
    for (int j = 0; j < scene_.ny; ++j)
      for (int i = window_.x_begin; i < window_.x_end; ++i) E_[s++] = scene_.at(0, j, i);
    for (int k = 0; k < kSlices - 1; ++k) stepper_.step(slice(k), slice(k + 1));
  }
  [[nodiscard]] const cpx* last() const { return E_.data() + plane_ * (kSlices - 1); }

 private:
  Slice slice(int k) {
    const std::size_t begin = plane_ * static_cast<std::size_t>(k);
    return {E_.data() + begin, F_.data() + begin, N_.data() + begin};
  }
  const Scene& scene_;
  CpuStepper& stepper_;
  Window window_;
  std::size_t plane_ = 0;
  std::vector<cpx> E_, N_;
  std::vector<double> F_;
};

// Both ends of the work are those of the slowest rank.
double step_seconds(Steps& steps) {
  return bench::median_seconds(
             [&] {
               ranks::meet();
               steps();
               ranks::meet();
             },
             kRuns) /
         (kSlices - 1);
}

void require_same(const Scene& scene, const Steps& one, const Steps& many) {
  std::vector<cpx> whole(scene.grid().plane());
  wpm::gather_rows(scene.grid(), many.last(), 0, scene.ny, whole.data());
  if (!ranks::is_first()) return;
  double largest = 0;
  double difference = 0;
  for (std::size_t s = 0; s < whole.size(); ++s) {
    largest = std::max(largest, std::abs(one.last()[s]));
    difference = std::max(difference, std::abs(whole[s] - one.last()[s]));
  }
  std::printf("largest difference from one process: %.1e of the field\n", difference / largest);
  if (!(difference <= 1e-13 * largest)) std::exit(1);
}

}  // namespace

int main(int argc, char* argv[]) {
  ranks::join(argc, argv);
  const int side = argc > 1 ? std::atoi(argv[1]) : 1024;
  const Scene scene = bench::growing_guide(side, kSlices);
  const Grid grid = scene.grid();
  const auto rank_stepper = make_rank_fast_stepper(grid, scene.options());
  Steps many(scene, *rank_stepper, wpm::window_of_rank(grid));
  many();
  if (ranks::is_first())
    std::printf("%d x %d, %d pairs, %d ranks\n", side, side, kPairs, ranks::count());
  {
    const auto one_stepper = make_fast_stepper(grid, scene.options());
    Steps one(scene, *one_stepper, Window::whole(grid));
    if (ranks::is_first()) one();
    require_same(scene, one, many);
    if (ranks::count() == 1)
      std::printf("one process    %8.1f ms a step\n", 1e3 * step_seconds(one));
  }
  bytes_sent = 0;
  many();
  const double sent = ranks::sum(static_cast<double>(bytes_sent)) / (kSlices - 1);
  const double all = static_cast<double>(side) * side;
  double kept = 0;  // samples of an exchange that stay on their rank
  for (int rank = 0; rank < ranks::count(); ++rank)
    kept += static_cast<double>(ranks::share_of(side, rank).size()) *
            ranks::share_of(side, rank).size();
  const double predicted = 16.0 * (1 + kPairs) * (all - kept);
  const double seconds = step_seconds(many);
  ranks::Transpose exchange(side, side);
  std::fill_n(exchange.in(), ranks::share(side).size() * side, 1.0);
  const double exchange_seconds = bench::median_seconds(
      [&] {
        ranks::meet();
        exchange.to_rows();
        ranks::meet();
      },
      kRuns);
  if (ranks::is_first())
    std::printf("ranks          %8.1f ms a step, %.0f bytes exchanged, predicted %.0f\n",
                1e3 * seconds, sent, predicted);
  if (ranks::is_first())
    std::printf("an exchange    %8.1f ms, of which a step has %d\n", 1e3 * exchange_seconds,
                1 + kPairs);
  return 0;
}
