// The files in which a run's arrays and numbers leave the system, and the comparison of two fields.
// A file that cannot be opened or fully written is an error, said in quiet mode too, and the run
// goes on.
#pragma once

#include <cufft.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "system/monitor.h"
#include "wpm/sink.h"

// Writes cross-sections of array, [nz][ny][nx], as comma-separated text: of complex elements the
// real part. Plane number s across the axis that p leaves out; s = -1 for all of them. A separator
// stands behind every value, an empty line behind every plane. Elements are taken with row step ny,
// the index volume's, so a field on a grid that is not square looks sheared; elements outside the
// array read 0.
void store_array(const cpx* array, int nz, int ny, int nx, std::string filename, plane p, int s);
void store_array(const double* array, int nz, int ny, int nx, std::string filename, plane p, int s);
void store_array(const cufftDoubleComplex* array, int nz, int ny, int nx, std::string filename,
                 plane p, int s);

// Copies n elements into the device's format; n <= 0 copies nothing.
void convert(const cpx* src, cufftDoubleComplex* dest, int n);

// Appends a row to the run record filename, which gets its header when it does not exist. Times in
// milliseconds; -1 for a field that does not apply. The speed-up is cpuTime / kernelTime. Any
// number of processes may share a record: one header, every row whole.
void store_results(std::string filename, std::string cfile, int kernel, int blockSize, int nz,
                   int ny, int nx, double kernelTime, double cpuTime, double err);

// The largest |(gpu - cpu) / cpu| over [nz][ny][nx]. Infinite where cpu alone is 0; a NaN, also of
// 0/0, never counts.
double compare(const cufftDoubleComplex* gpu, const cpx* cpu, int nz, int ny, int nx);

// The smallest power of two, from 1 on, that is not below x; 2^30 for x above it.
int nextpow2(double x);

// Writes the flux of each slice of F, [nz][ny][nx], over that of the first, as one line behind an
// empty one; the flux of the first, 0 without slices.
double store_flux_profile(const double* F, const Grid& grid, const std::string& file);

// --- The same files, slice by slice

// Whether the program was built with HDF5, which files of the field are written by.
bool writes_field_files();

// Whether the cross-sections of a run that holds only a few slices can be written: on square grids
// those of one plane and all planes across z.
bool can_stream(plane p, int s, const Grid& grid);

// The file that store_array writes of a whole volume, for what can be streamed. Sinks open their
// file when they take their first slice.
enum class Quantity { kField, kFlux, kIndex };
std::unique_ptr<Sink> make_cross_section_sink(const std::string& file, Quantity quantity, plane p,
                                              int s, const Grid& grid);

// The same from slices, [ny][nx], that are asked for in order where the file shows them; null for
// one that is 0 everywhere.
void store_slices(const std::function<const cpx*(int)>& slice, const Grid& grid,
                  const std::string& file, plane p, int s);
void store_slices(const std::function<const double*(int)>& slice, const Grid& grid,
                  const std::string& file, plane p, int s);

// The file of store_flux_profile.
class FluxProfileSink : public Sink {
 public:
  // The flux of slice 0, once that is taken.
  [[nodiscard]] virtual double flux0() const = 0;
};
std::unique_ptr<FluxProfileSink> make_flux_profile_sink(const std::string& file);

// --- Monitors

// What monitors know of their run.
struct RunContext {
  std::string configuration;         // its file, as typed, for messages
  std::string text;                  // its contents
  std::string options;               // the command line
  std::string version;               // of the program
  double lambda = 0;                 // m
  double k0 = 0;                     // rad/m
  std::vector<std::string> outputs;  // files that the run writes besides
  // Power that the absorbing edge has taken so far, the sum of |E|^2 dx dy in m^2; may be empty.
  std::function<double()> light_taken{};
  // The field of a mode of type file on the samples of the grid, [ny][nx]; ends the process, with
  // the monitor's line, if it cannot.
  std::function<std::vector<cpx>(const Monitor&, const Grid&)> read_mode{};
};

// A sink for each monitor, in order. All that can be known to be wrong ends the process with the
// monitor's line: a file that cannot be written, is written twice or does not fit its disk, a box
// outside of the domain, a mode that there is none of. Files are made when the first slice is
// taken, those of the field in full: one that the disk does not take ends the process then, before
// a step.
//   field    HDF5 in the VTKHDF layout of image data, [slices][rows][columns]
//   beam     a table of power, place and width, a row for each slice
//   overlap  a table of the overlap with a mode; the index from the slope of its phase
//   focus    one row: the brightest place of a box and its widths, behind the last slice
std::vector<std::unique_ptr<Sink>> make_monitors(const std::vector<Monitor>& monitors,
                                                 const Grid& grid, const RunContext& run);

// --- Before the run

// Why the file of that name could not be written, empty if it could. Creates, changes and removes
// nothing.
std::string why_unwritable(const std::string& name);

// Warns of such a file.
void warn_if_unwritable(const std::string& name);

// Ends the process if an output is the very file that is read as input, also by another name.
void refuse_own_input(const std::string& input, const std::vector<std::string>& outputs);

// Empties those of the files that exist, so that what a run leaves when it is interrupted is its
// own; creates none, and leaves pipes and devices alone.
void empty_results(const std::vector<std::string>& names);
