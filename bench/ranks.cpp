// mpirun -n N zerith-bench-ranks [SIDE]: a step of one field over N ranks, its time and the bytes
// that it exchanges, next to those that are predicted. One rank, with or without mpirun, writes its
// field to ranks-SIDE.field; several ranks compare theirs with it.
//
// Bytes are counted where they are handed to MPI: its profiling interface lets a program wrap its
// calls.
#include <mpi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "measure.h"
#include "ranks/ranks.h"
#include "wpm/batches.h"

namespace {

long long bytes_sent = 0;  // to other ranks

long long bytes_of(int count, MPI_Datatype type) {
  int size = 0;
  MPI_Type_size(type, &size);
  return static_cast<long long>(count) * size;
}

}  // namespace

extern "C" {
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

// The steps of a scene by a stepper, on the rank's rows.
class Steps {
 public:
  Steps(const Scene& scene, Stepper& stepper)
      : scene_(scene), stepper_(stepper), rows_(ranks::share(scene.ny)) {
    for (int k = 0; k < kSlices; ++k)
      N_.insert(N_.end(), scene.N.begin() + at(k, rows_.begin), scene.N.begin() + at(k, rows_.end));
    plane_ = N_.size() / kSlices;
    E_.resize(N_.size());
    F_.resize(N_.size());
  }
  void operator()() {
    std::fill(E_.begin(), E_.end(), 0.0);
    std::copy(scene_.E.begin() + at(0, rows_.begin), scene_.E.begin() + at(0, rows_.end),
              E_.begin());
    for (int k = 0; k < kSlices - 1; ++k) step(stepper_, slice(k), slice(k + 1));
  }
  [[nodiscard]] const cpx* last() const { return E_.data() + plane_ * (kSlices - 1); }

 private:
  [[nodiscard]] std::ptrdiff_t at(int k, int row) const {
    return static_cast<std::ptrdiff_t>(scene_.index(k, 0, 0)) + std::ptrdiff_t{row} * scene_.nx;
  }
  Slice slice(int k) {
    const std::size_t begin = plane_ * static_cast<std::size_t>(k);
    return {E_.data() + begin, F_.data() + begin, N_.data() + begin};
  }
  const Scene& scene_;
  Stepper& stepper_;
  ranks::Share rows_;
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

// Keeps the last slice of one rank, or compares that of several with it.
void require_same(const Scene& scene, const Steps& steps) {
  std::vector<cpx> whole(scene.grid().plane());
  ranks::gather_lines(steps.last(), whole.data(), scene.ny, {0, scene.ny},
                      static_cast<std::size_t>(scene.nx) * sizeof(cpx));
  if (!ranks::is_first()) return;
  const std::string name = "ranks-" + std::to_string(scene.nx) + ".field";
  const auto bytes = static_cast<std::streamsize>(whole.size() * sizeof(cpx));
  if (ranks::count() == 1) {
    std::ofstream(name, std::ios::binary).write(reinterpret_cast<const char*>(whole.data()), bytes);
    return;
  }
  std::vector<cpx> one(whole.size());
  if (!std::ifstream(name, std::ios::binary).read(reinterpret_cast<char*>(one.data()), bytes)) {
    std::printf("not compared: one rank, run first, writes %s\n", name.c_str());
    return;
  }
  double largest = 0;
  double difference = 0;
  for (std::size_t s = 0; s < whole.size(); ++s) {
    largest = std::max(largest, std::abs(one[s]));
    difference = std::max(difference, std::abs(whole[s] - one[s]));
  }
  std::printf("largest difference from one rank: %.1e of the field\n", difference / largest);
  if (!(difference <= 1e-13 * largest)) std::exit(1);
}

}  // namespace

int main(int argc, char* argv[]) {
  ranks::join(argc, argv);
  const int side = argc > 1 ? std::atoi(argv[1]) : 1024;
  const Scene scene = bench::growing_guide(side, kSlices);
  const Grid grid = scene.grid();
  const auto stepper = make_fast_stepper(grid, scene.options());
  Steps many(scene, *stepper);
  many();
  if (ranks::is_first())
    std::printf("%d x %d, %d pairs, %d ranks\n", side, side, kPairs, ranks::count());
  require_same(scene, many);
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
  wpm::TurningPlane plane(side, side);
  const double exchange_seconds = bench::median_seconds(
      [&] {
        ranks::meet();
        plane.exchange();
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
