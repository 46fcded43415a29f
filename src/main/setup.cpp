// The stages up to the axes: configuration, its report, the sampling.
#include <cmath>
#include <cstdint>

#include "chCommandLine.h"
#include "diagnostics.h"
#include "main/stages.h"

bool Run::has_option(const char* short_form, const char* long_form) const {
  return chCommandLineGetBool(short_form, argc, argv) ||
         chCommandLineGetBool(long_form, argc, argv);
}

template <typename T>
void Run::read_option(T* value, const char* short_form, const char* long_form) const {
  chCommandLineGet(value, short_form, argc, argv);
  chCommandLineGet(value, long_form, argc, argv);
}

template void Run::read_option<int>(int*, const char*, const char*) const;
template void Run::read_option<std::string>(std::string*, const char*, const char*) const;

void log_timed(const Log& log, const ChTimer& timer) {
  log << "done. " << 1000.0 * timer.getTime() << "ms" << std::endl;
}

namespace {

void require_wpm(const Run& run) {
  run.log << "\tMethod ...\t\t";
  if (run.so->mth == WPM) {
    run.log << "WPM" << std::endl;
    return;
  }
  run.log << "\033[31mError, unsupported method specified in " << run.fname
          << ". Please use WPM with this tool.\033[0m" << std::endl;
  diagnostics::fail(run.fname +
                    ": only the wave propagation method is supported; write method = wpm");
}

// The decision is part of the report: a quiet run makes none and treats the device's wave as TE.
void report_polarization(Run& run) {
  if (run.is_quiet) return;
  run.log << "\tPolarization ...\t";
  if (run.pol == TE) {
    run.log << "TE" << std::endl;
    run.is_TE = true;
  } else if (run.pol == TM) {
    run.log << "TM" << std::endl;
    run.is_TE = false;
  } else {
    run.log << "\033[31mError, missing polarization for scalar method " << run.fname
            << ". Please specify the polarization, i.e. TE or TM.\033[0m" << std::endl;
  }
  run.log << "\tSampling ..." << std::endl;
}

// Counts and indices are 32-bit signed ints throughout.
void require_usable_grid(const Run& run) {
  const std::string sizes =
      std::to_string(run.nx) + " x " + std::to_string(run.ny) + " x " + std::to_string(run.nz);
  if (run.nx < 0 || run.ny < 0 || run.nz < 0)
    diagnostics::fail(run.fname + ": a grid of " + sizes +
                      " samples has a negative size; nx, ny and nz must be 0 or more");
  constexpr double kLimit = 2147483648.0;
  const double plane = static_cast<double>(run.nx) * run.ny;
  if (plane >= kLimit || plane * run.nz >= kLimit)
    diagnostics::fail(run.fname + ": a grid of " + sizes +
                      " samples has 2^31 voxels or more; make nx, ny or nz smaller");
  if (run.nx != run.ny)
    diagnostics::warn(run.fname + ": nx = " + std::to_string(run.nx) +
                      " and ny = " + std::to_string(run.ny) +
                      " differ; the index volume and the files then have rows of another step than "
                      "the field, and the spectrum is that of a sheared slice");
}

void report_frequencies(const Log& log, char axis, double extent, double spacing) {
  const double df = 1.0 / extent;
  const double f_max = 1.0 / spacing;
  log << "\tdone."
      << "\tdf" << axis << "=" << df / 1000000.0 << "MHz, fmax_" << axis << "=" << f_max / 1000000.0
      << "MHz, flim_" << axis << "=" << (0.5 * f_max) / 1000000.0 << "MHz, dtheta_" << axis << "="
      << std::asin(df / f_max) * 180.0 / 3.14159265 << "°" << std::endl;
}

}  // namespace

void read_configuration(Run& run) {
  run.is_quiet = run.has_option("q", "quiet");
  run.log = Log(run.is_quiet);
  diagnostics::set_quiet(run.is_quiet);
  run.log << std::endl << "Initialization ..." << std::endl;

  run.read_option(&run.fname, "i", "config-file");
  run.initTimer.start();
  run.log << "\tConfiguration file ...\t\t" << run.fname << std::endl;

  run.so = new struct_sysOptions;
  run.so->reset();
  run.lv = new std::vector<struct_layer>;
  run.fv = new std::vector<struct_emfield>;
  run.log << "\tParsing ... \t\t" << run.fname << std::endl;
  parse(run.fname, run.so, run.lv, run.fv, run.is_quiet);
  run.log << "\tParsing ... \t\tdone." << std::endl << std::endl;

  run.is_magnetic_field = run.so->hfield;
  if (run.is_magnetic_field)
    run.log << "\tMagnetic field ...\t" << run.is_magnetic_field << std::endl;
  run.do_evanescent_modes = run.so->evanescent;
  run.log << "\tEvanescent modes ...\t" << run.do_evanescent_modes << std::endl;
  require_wpm(run);
  run.pol = run.so->p;
  report_polarization(run);
}

void lay_out_sampling(Run& run) {
  const Log& log = run.log;
  run.nx = run.so->nx;
  run.ny = run.so->ny;
  run.nz = run.so->nz;
  run.dx = run.so->dx * run.so->f;
  run.dy = run.so->dy * run.so->f;
  run.dz = run.so->dz * run.so->f;
  run.ax = run.nx * run.dx;
  run.ay = run.ny * run.dy;
  run.az = run.nz * run.dz;
  require_usable_grid(run);
  const auto nx = static_cast<std::size_t>(run.nx);
  const auto ny = static_cast<std::size_t>(run.ny);

  log << "\t\tSpace X ...";
  run.X = allocate_doubles(nx, "X");
  init_X(run.X, run.nx, run.dx);
  log << "\tdone."
      << "\tnx=" << run.nx << ", dx=" << run.dx << "m"
      << ", ax=" << run.ax << "m" << std::endl;

  log << "\t\tSpace Y ...";
  run.Y = allocate_doubles(ny, "Y");
  init_X(run.Y, run.ny, run.dy);
  log << "\tdone."
      << "\tny=" << run.ny << ", dy=" << run.dy << "m"
      << ", ay=" << run.ay << "m" << std::endl;

  log << "\t\tSpace Z ...\tdone."
      << "\tnz=" << run.nz << ", dz=" << run.dz << "m"
      << ", az=" << run.az << "m" << std::endl;

  log << "\t\tFreq X ...";
  run.KX = allocate_complex(nx, "KX");
  init_F(run.KX, run.nx, 6.2831853 / run.ax);
  report_frequencies(log, 'x', run.ax, run.dx);

  log << "\t\tFreq Y ...";
  run.KY = allocate_complex(ny, "KY");
  init_F(run.KY, run.ny, 6.2831853 / run.ay);
  report_frequencies(log, 'y', run.ay, run.dy);
  log << "\tSampling ... \t\tdone." << std::endl << std::endl;
}
