// Device functions and kernels as host calls: each runs on the device over a table of inputs.
#pragma once

#include <vector>

#include "kernel/mode.cuh"

namespace probes {

inline constexpr double kK0 = 2.0;  // of every step
inline constexpr double kDz = 0.5;
inline constexpr double2 kAmplitude = {0.6, -0.3};

struct Step {
  double2 n_i, n_t, kz_i, kz_t;
  bool is_TE;
};

struct Wave {
  double2 n_i, n_t;
  double kxy_sq;
  bool is_vertical_incidence;
  device::ModeRules rules;
  double2 f = kAmplitude;
};

std::vector<double2> roots(const std::vector<double2>& values);
std::vector<double> trims(const std::vector<double>& values);
std::vector<double2> transmissions(const std::vector<Step>& steps);
std::vector<device::DeviceMode> modes(const std::vector<Wave>& waves);

// One launch of a shared-memory kernel over device pointers, nx*ny threads in blocks of B.
cudaError_t launch_line(bool is_TE, double2* E, double2* N, double2* KX, double2* S, double* X,
                        double k0, double dz, int nx, int ny, int k, int B);

}  // namespace probes
