// The description of one simulation: its records, the configuration file that fills them, and the
// rasterisers that paint a component into the index volume.
//
// Every length in the records is in the file's unit; struct_sysOptions::f is metres per unit.
// Angles are in degrees.
#pragma once

#include <complex>
#include <cstdint>
#include <string>
#include <vector>

using cpx = std::complex<double>;

enum polarization : std::int32_t { NA, TE, TM };

// The parser's state: a section is open (_S), or its closing tag has been seen (_E).
enum section : std::int32_t {
  NONE,
  GLOBAL_S,
  WAVE_S,
  LAYER_S,
  RCWA_S,
  FDTD_S,
  GLOBAL_E,
  WAVE_E,
  LAYER_E,
  RCWA_E,
  FDTD_E,
  MONITOR_S,  // an extension, like its end
  MONITOR_E
};

enum method : std::int32_t { BLANK, VWPM, WPM, VBPM, BPM, FDTD, RCWA };

enum plane : std::int32_t { XY, XZ, YZ, ZX, ZY, YX };

// LP01, the mode of a fibre, and FIELD_FILE are extensions.
enum shape : std::int32_t { RANDOM, PLANE, GAUSSIAN, LP01, FIELD_FILE };

// GRIN, SCREEN and INDEX_FILE are extensions.
enum component : std::int32_t {
  HOMOG,
  GRATING,
  WGUIDE,
  TAPER,
  LENS,
  ASPHERE,
  SPLITTER,
  MZEHNDER,
  GRIN,
  SCREEN,
  INDEX_FILE
};

enum scale : std::int32_t { M, DM, CM, MM, UM, NM, PM };

// One incident wave.
struct struct_emfield {
  shape s = RANDOM;
  double x = 0, y = 0, z = 0;     // reference point
  double amp = 0;                 // amplitude
  double lambda = 0;              // vacuum wavelength
  double theta = 0, phi = 0;      // direction: from the z axis, and about it from the x axis
  double beta = 0;                // reported; used in no formula
  double sigmax = 0, sigmay = 0;  // widths of a Gaussian wave

  bool add = false;             // added to the waves before it; otherwise replaces them
  double r = 0, n = 0, ne = 0;  // LP01: core radius, indices of core and cladding
  std::string file{};           // FIELD_FILE: relative to the configuration's folder
  std::string dataset = "/E";   //   in that file
  double dx = 0, dy = 0;        //   its sampling; 0: from the file's attributes
  int line = 0;                 // of the opening tag; 0 if the wave is from no file

  void copy(const struct_emfield& f);
  void reset();
};

// One optical component. (n, k) and (eps_r, eps_i) describe the same first material, (ne, ke) and
// (epse_r, epse_i) the same second one. The parser makes the pairs agree.
struct struct_layer {
  component t = HOMOG;
  double x = 0, y = 0;    // offset of the axis from the grid's centre
  double z = 0;           // thickness along the propagation axis
  double r = 0;           // core radius; signed radius of curvature of a lens
  double f = 0;           // stored but not used
  double px = 0, wx = 0;  // grating period and width; wx: excursion of a splitter
  double py = 0, wy = 0;
  double rin = 0, rout = 0;     // radius at the entry and at the exit
  double n = 0, k = 0;          // first material: index and extinction
  double eps_r = 0, eps_i = 0;  //   its relative permittivity
  double ne = 0, ke = 0;        // second material
  double epse_r = 0, epse_i = 0;
  double se = 0, sm = 0;          // stored but not used
  double dx = 0, dy = 0, dz = 0;  // offset of a lens's sphere; no key fills it

  int levels = 0;                   // steps of a voxel at a face; 0: the kind's default
  double offsetx = 0, offsety = 0;  // moves the component sideways
  double tiltx = 0, tilty = 0;      // degrees
  bool over = false;                // painted over the slices of the layer before it
  double g = 0;                     // gradient of a graded index, 1 / file unit
  double duty = 0;                  // share of the bars of a grating; 0: not given
  double transmission = 0;          // amplitude of a screen outside its opening
  std::string file{}, dataset{};    // a volume of indices, or a screen's mask
  double file_dx = 0, file_dy = 0, file_dz = 0;  // its sampling; 0: from the file's attributes
  bool interpolate = false;
  int line = 0;  // of the opening tag; 0 if the layer is from no file

  // Copies all fields but wx, wy, dx, dy and dz.
  void copy(const struct_layer& l);
  void reset();
};

// The grid and the options of the whole simulation. The initial values are those of reset(). Unused
// fields are part of the file format and are stored.
struct struct_sysOptions {
  bool updated = false;
  bool smooth = false;
  std::string sysname;  // path of the configuration file
  scale scl = M;
  method mth = WPM;
  bool irradiance = false;
  bool energyflux = false;
  bool absorption = false;
  bool bidirectional = false;
  bool multithreaded = false;
  bool distributed = false;
  bool evanescent = true;  // carry evanescent modes
  bool efield = true;
  bool hfield = false;        // compute the magnetic field
  bool permittivity = false;  // layers give permittivities, not indices
  bool permeability = false;
  int iterations = 1;
  int threads = 1;
  int workers = 0;
  int workersDone = 1;
  int nodes = 1;
  int iz = 0;
  int izlast = 0;              // the next free slice while components are rasterised
  int nx = 1, ny = 1, nz = 0;  // samples; nx, ny start at 1 and nz at 0
  double x = 0, y = 0, z = 0;  // extents
  double t = 0;
  double dx = 1, dy = 1, dz = 1;  // spacings, extent / samples
  double f = 1;                   // metres per file unit
  polarization p = NA;

  double edge = 0;   // width of the absorbing edge
  bool trim = true;  // transmission coefficients are rounded down to 0.0001

  // Copies all fields but sysname.
  void copy(const struct_sysOptions& s);
  void reset();
};

using emfield = struct_emfield;
using layer = struct_layer;
using sysOptions = struct_sysOptions;

// Complex refractive index n + i*kappa of a relative permittivity, both roots non-negative. The
// sign of a negative imaginary part is lost.
cpx epsToN(const cpx& eps);

// Relative permittivity (n^2 - k^2) + i*2nk of a complex refractive index (n, k).
cpx nToEps(const cpx& n);

// Removes every blank (0x20, not tabs) from the zero-terminated text, in place. Always true.
bool removeBlanks(char* s);

// Metres per unit of length; 1e-09 for a value outside the enumeration.
double metres_per_unit(scale scl);

constexpr int MAX_CHARS_PER_LINE = 80;  // terminator included: a line has at most 79
constexpr int MAX_TOKENS_PER_LINE = 1;
constexpr const char* DELIMITER = "\n";
constexpr const char* ASSIGN = "=";
constexpr const char* END = " ;";

// Reads the configuration file into *so (reset first) and appends its waves and layers. Unless
// is_quiet, echoes each line to the log. Ignores unknown input with a warning. Throws Error if the
// file cannot be read, or a line is too long or has only equals signs.
void parse(const std::string& filename, struct_sysOptions* so, std::vector<struct_layer>* layers,
           std::vector<struct_emfield>* fields, bool is_quiet);

// The rasterisers. Each paints component l into N, [nz][ny][nx] flat, from slice so->izlast on. The
// row step is ny, not nx: the index volume and its file are defined so. Returns the number of
// slices of the component, cut at the end of the domain. Voxels outside the array are dropped.
// Reserved kinds take their slices and write nothing.
int init_homog_system(cpx* N, const struct_sysOptions* so, const struct_layer& l);
int init_grating_system(cpx* N, const struct_sysOptions* so, const struct_layer& l);
int init_wguide_system(cpx* N, const struct_sysOptions* so, const struct_layer& l);
int init_taper_system(cpx* N, const struct_sysOptions* so, const struct_layer& l);
int init_splitter_system(cpx* N, const struct_sysOptions* so, const struct_layer& l);
int init_lens_system(cpx* N, const struct_sysOptions* so, const struct_layer& l);
int init_asphere_system(cpx* N, const struct_sysOptions* so, const struct_layer& l);
int init_mzehnder_system(cpx* N, const struct_sysOptions* so, const struct_layer& l);
