// Scene preparation and the propagator on the CPU.
//
// Arrays are flat. With i, j, k counting x, y, z: E and F hold slice k, row j, sample i at
// k*nx*ny + j*nx + i; the rasterisers write N with row step ny instead, which is the same on a
// square grid. Lengths are in metres, frequencies in rad/m.
#pragma once

#include <vector>

#include "system/system.h"

// --- Sampling grids

// Sets f of *so, metres per unit, from its scl.
void init(struct_sysOptions* so);

// X[i] = (i - floor(nx/2)) * dx for i in 0..nx-1: centred, 0 at index nx/2.
void init_X(double* X, int nx, double dx);

// F[i] = (m*df, 0) with m in transform order: 0, 1, ..., then the negative frequencies. For odd n
// the last element is left as it is: n/2 frequencies of each sign are written.
void init_F(cpx* F, int n, double df);

// Clears the flux volume F, [nz][ny][nx], and says so on the log unless is_quiet.
void init_0(double* F, const struct_sysOptions* so, bool is_quiet);

// --- Index volume

// Paints the layers, in order, into N as a stack along z; so->izlast is left at the number of
// slices assigned. Voxels that no layer writes keep their contents. Slices that no layer paints
// draw a warning.
void init_N(cpx* N, struct_sysOptions* so, const std::vector<struct_layer>* layers, bool is_quiet);

// --- Wave sources

// Each lays wave f on slice 0 of E and F, replacing what is there, and returns its wavelength in
// metres. The phase is (r . s) * 2 pi n / lambda with n the local index of slice 0 of N; the flux
// is |amplitude|^2 * 2 pi cos(theta) / lambda, without the envelope of a Gaussian wave and without
// n.
double init_plane_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                       const struct_emfield& f, bool is_quiet);
double init_gauss_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                       const struct_emfield& f, bool is_quiet);
double init_random_wave(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
                        const struct_emfield& f, bool is_quiet);

// Lays the waves, in order, on a slice of the field and of the flux, [ny][nx] each; N0 is slice 0
// of the index. A wave replaces those before it, or is added to them if its `add` is set: then the
// field is the sum, and the flux that of the sum. A size of 0 counts as 1. A field that is zero
// everywhere or not finite draws a warning with the likely reason.
void lay_incident_field(cpx* E0, double* F0, const cpx* N0, const struct_sysOptions& so,
                        const std::vector<struct_emfield>& fields, bool is_quiet);

// The same on slice 0 of a volume, [nz][ny][nx]; clears all later slices of E and, if not null, F.
// Returns the vacuum wavelength.
double init_E(cpx* E, double* F, const cpx* N, const struct_sysOptions* so,
              const std::vector<struct_emfield>* fields, bool is_quiet);

// --- Fresnel transmission

// Rounds both parts of c down to a multiple of 0.0001, towards minus infinity.
void trim(cpx& c);

// Amplitude transmission of a plane wave across an index step, trimmed; (1, 0) for a denominator
// of 0. kz in rad/m. Source: the Fresnel equations (Born & Wolf, Principles of Optics, 1.5.2)
// written with longitudinal wavenumbers, so evanescent waves need no form of their own.
//   TE  2 kz_i / (kz_i + kz_t)
//   TM  2 n_i n_t kz_i / (n_i^2 kz_t + n_t^2 kz_i)
cpx fresnelTTE(const cpx& kz_i, const cpx& kz_t);
cpx fresnelTTM(const cpx& n_i, const cpx& n_t, const cpx& kz_i, const cpx& kz_t);

// --- Slice propagator

// Advances E and F through slices 1..nz-1: scalar WPM, unidirectional (K.-H. Brenner, W. Singer,
// Applied Optics 32, 4984, 1993).
//   E  in/out [nz][ny][nx]  slice 0 given, the rest zero: terms are added
//   F  in/out [nz][ny][nx]  likewise; |f_t|^2 * Re(kz_t) of every propagating plane wave is added
//   N  in     [nz][ny][nx]  n + i*kappa, kappa > 0 absorbs
//   KX, KY in [nx], [ny]    rad/m, transform order;  X, Y in m, centred;  k0 in rad/m
//   dy, dx                  not read
//   pol                     TE, TM; anything else means no Fresnel factor
// NaN in, NaN out. Each sample's terms are added in order of q, then p, whatever the number of
// OpenMP threads, so the result does not depend on it. Plans with FFTW_MEASURE and rewrites
// wisdom3.txt in the working directory. Cost (nz-1)*(nx*ny)^2.
void zerith_3D(cpx* E, double* F, const cpx* N, const cpx* KX, const double* X, const cpx* KY,
               const double* Y, double k0, double dz, double dy, double dx, int nz, int ny, int nx,
               bool do_evanescent_modes, bool is_magnetic_field, polarization pol);
