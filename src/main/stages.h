// The stages of a run, in the order in which main calls them.
#pragma once

#include <cuda_runtime.h>
#include <cufft.h>

#include <string>
#include <vector>

#include "chTimer.h"
#include "log.h"
#include "wpm/wpm.h"

constexpr const char* VERSION = "Version 0.10";
constexpr int DEFAULT_KERNEL = 0;
constexpr int DEFAULT_BLOCK_SIZE = 16;
constexpr plane DEFAULT_PLANE = XY;
constexpr int DEFAULT_LAYER = 0;

// All that the stages of one run share. Arrays are flat, from calloc, and belong to the run.
struct Run {
  int argc = 0;
  char** argv = nullptr;

  bool is_quiet = false;
  Log log;
  std::string fname = "<none>";  // configuration file, as typed

  // The description; released once the incident field stands.
  struct_sysOptions* so = nullptr;
  std::vector<struct_layer>* lv = nullptr;
  std::vector<struct_emfield>* fv = nullptr;

  bool is_magnetic_field = false;
  bool do_evanescent_modes = true;
  polarization pol = NA;
  bool is_TE = true;  // what the device is told; a quiet run leaves it true whatever pol says

  int nx = 0, ny = 0, nz = 0;
  double dx = 0, dy = 0, dz = 0;  // m
  double ax = 0, ay = 0, az = 0;  // extents, m
  double lambda = 0;              // m
  double k0 = 0;                  // rad/m

  double* X = nullptr;  // [nx] m
  double* Y = nullptr;  // [ny] m
  cpx* KX = nullptr;    // [nx] rad/m
  cpx* KY = nullptr;    // [ny] rad/m
  cpx* N = nullptr;     // [nz][ny][nx]
  double* F = nullptr;  // [nz][ny][nx]
  cpx* E = nullptr;     // [nz][ny][nx]

  // Staging copies of the device branch; h_E brings the device's field back.
  cufftDoubleComplex* h_E = nullptr;
  cufftDoubleComplex* h_N = nullptr;
  cufftDoubleComplex* h_KX = nullptr;
  cufftDoubleComplex* h_KY = nullptr;

  plane p = DEFAULT_PLANE;  // which cross-sections the files hold
  int s = DEFAULT_LAYER;

  bool is_store = false, is_cpu = false, is_gpu = false, is_compare = false;
  bool is_fast = false;  // sum the plane waves by transforms
  std::string record;    // file name of the run record
  int kernel = DEFAULT_KERNEL;
  int blockSize = DEFAULT_BLOCK_SIZE;

  ChTimer initTimer, kernelTimer, cpuTimer, mallocTimer, convertTimer, H2DTimer, D2HTimer;

  // Voxels of the volume, samples of a slice.
  [[nodiscard]] std::size_t voxels() const {
    return plane_samples() * static_cast<std::size_t>(nz);
  }
  [[nodiscard]] std::size_t plane_samples() const {
    return static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
  }

  // Options, the long form read last so that it wins.
  [[nodiscard]] bool has_option(const char* short_form, const char* long_form) const;
  template <typename T>
  void read_option(T* value, const char* short_form, const char* long_form) const;
};

// Help and version end the process.
void answer_help_and_version(const Run& run);

// Reads the configuration, reports what it asks for and refuses what cannot be done.
void read_configuration(Run& run);

// Lays out the axes X, Y, KX, KY and reports the sampling.
void lay_out_sampling(Run& run);

// Brings N, F and the incident E into being and releases the description.
void build_volumes(Run& run);

// Writes N_sys.csv, E_inp.csv and F_inp.csv.
void export_inputs(Run& run);

// Reads what is to be run and how, and says before hours have passed which results could not be
// written.
void read_run_flags(Run& run);

// Propagates on the device and writes E_gpu.csv, EFlux_gpu.csv and EFlux_gpu_Z.csv.
void run_on_device(Run& run);

// Propagates on the CPU and writes E_cpu.csv, EFlux_cpu.csv and EFlux_cpu_Z.csv.
void run_on_cpu(Run& run);

// Compares the device's field with the CPU's.
void compare_branches(Run& run);

// Frees the arrays, all but F.
void release(Run& run);

// --- What several stages use

// The help text on standard output; argv is the program's name as invoked.
void printHelp(const char* argv);

// Reports an allocation that failed on standard output, quiet or not: "Error - Memory allocation
// s".
void check(const double* array, const std::string& s);
void check(const cpx* array, const std::string& s);

// count zeroed elements, checked; failure ends the process with the bytes that were asked for.
double* allocate_doubles(std::size_t count, const std::string& name);
cpx* allocate_complex(std::size_t count, const std::string& name);

// "done. ", milliseconds, "ms", line end.
void log_timed(const Log& log, const ChTimer& timer);

// Writes the flux of each slice over that of the first as one line behind an empty one, and logs
// the flux of the first behind label, followed by line_ends line ends.
void store_flux_profile(const Run& run, const std::string& filename, const char* label,
                        int line_ends);
