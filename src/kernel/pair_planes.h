// The planes of a batch of pairs, and their way from a spectrum to samples.
#pragma once

#include <cufft.h>

#include <map>

#include "kernel/device_array.h"
#include "kernel/plane_kernels.cuh"
#include "kernel/status.h"

namespace device {

// What a step needs to know of its plane.
struct Plane {
  int nx, ny;
  int covered_x, covered_y;  // samples that are reached
  double drift_x, drift_y;   // rad per frequency number and sample

  Plane(int nx, int ny, int blockSize);
  [[nodiscard]] std::size_t samples() const;
  [[nodiscard]] std::size_t folds() const;
};

// Blocks of the kernels over planes: of columns x rows elements in count layers.
dim3 blocks_over(int columns, int rows, int layers = 1);
inline constexpr unsigned kLineBlock = 128;  // threads of the kernels over a line
dim3 blocks_over_line(int count, int layers = 1);

// Threads that add up, or look at, so many terms, kRun each.
int strands_of(std::size_t terms);

// Sums by transforms. Pairs are taken in batches that fill the room for planes.
class PairPlanes {
 public:
  PairPlanes(const Plane& plane, const ModeRules& rules, const StepperOptions& options,
             Status& status);
  ~PairPlanes();
  PairPlanes(const PairPlanes&) = delete;
  PairPlanes& operator=(const PairPlanes&) = delete;

  // Makes room and plans for count pairs, and works out their transfer functions, unless they are
  // so many that each step has to.
  void set_pairs(int count, const IndexPair* constants, const double* kx, const double* ky,
                 Wild* wild, int pairs_number);

  // The slice behind the spectrum S; which holds bytes_a_sample (2 or 4) for each sample.
  void sum(double2* E, double* F, const double2* S, const void* which, int bytes_a_sample,
           Wild* wild, int step);

 private:
  void work_out_transfers(int first, int count);
  void sum_flux(int first_slot, int batch);
  void invert(int batch);
  void plan(int batch);

  const Plane plane_;
  const ModeRules rules_;
  const StepperOptions options_;
  Status& status_;
  const int largest_batch_;

  int count_ = 0, batch_ = 0;
  bool has_all_transfers_ = false;
  const IndexPair* constants_ = nullptr;
  const double *kx_ = nullptr, *ky_ = nullptr;
  Wild* wild_ = nullptr;
  int pairs_number_ = 0;

  struct Plans {
    cufftHandle field = 0, drift = 0;
  };
  std::map<int, Plans> plans_;  // by pairs of a batch
  Array<double2> f_, field_, A_;
  Array<float2> drift_;
  Array<double> power_, flux_;
  Array<double> strands_[2];  // of the flux, level by level in turn
  double* pair_flux_ = nullptr;
};

}  // namespace device
