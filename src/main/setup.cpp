// The stages up to the axes: configuration, its report, the sampling.
#include <omp.h>

#include <cmath>
#include <cstdint>

#include "constants.h"
#include "diagnostics.h"
#include "main/memory.h"
#include "main/stages.h"
#include "main/streaming.h"
#include "ranks/ranks.h"
#include "system/advice.h"
#include "wpm/threads.h"

Run::Run(const Options& options_)
    : options(options_), log(options_.is_quiet || options_.is_check || !ranks::is_first()) {
  omp_set_num_threads(threads_of(options));  // of the stand-in
  wpm::set_threads(threads_of(options));
}

StepOptions Run::step_options() const {
  const struct_sysOptions& so = description.so;
  return {k0, grid.dz, so.evanescent, so.hfield, so.p, so.trim, options.tolerance};
}

void log_timed(const Log& log, double milliseconds) {
  log << "done. " << milliseconds << "ms" << std::endl;
}

namespace {

void require_wpm(const Run& run) {
  run.log << "\tMethod ...\t\t";
  if (run.description.so.mth == WPM) {
    run.log << "WPM" << std::endl;
    return;
  }
  const std::string& fname = run.options.config_file;
  run.log << "\033[31mError, unsupported method specified in " << fname
          << ". Please use WPM with this tool.\033[0m" << std::endl;
  diagnostics::fail(run.place("only the wave propagation method is supported; write method = wpm"));
}

// The decision is part of the report: a quiet run makes none and treats the device's wave as TE.
void report_polarization(Run& run) {
  if (run.options.is_quiet) return;
  const polarization pol = run.description.so.p;
  run.log << "\tPolarization ...\t";
  if (pol == TE) {
    run.log << "TE" << std::endl;
    run.is_TE = true;
  } else if (pol == TM) {
    run.log << "TM" << std::endl;
    run.is_TE = false;
  } else {
    run.log << "\033[31mError, missing polarization for scalar method " << run.options.config_file
            << ". Please specify the polarization, i.e. TE or TM.\033[0m" << std::endl;
  }
  run.log << "\tSampling ..." << std::endl;
}

std::string sizes_of(const Grid& grid) {
  return std::to_string(grid.nx) + " x " + std::to_string(grid.ny) + " x " +
         std::to_string(grid.nz);
}

// Why a grid is refused, "" if it is not. Counts and indices of a slice are 32-bit signed ints
// throughout, and of a volume too.
std::string refusal(const Run& run) {
  const Grid& grid = run.grid;
  if (grid.nx < 0 || grid.ny < 0 || grid.nz < 0)
    return "has a negative size; nx, ny and nz must be 0 or more";
  constexpr double kLimit = 2147483648.0;
  const double plane = static_cast<double>(grid.nx) * grid.ny;
  if (plane >= kLimit) return "has slices of 2^31 samples or more; make nx or ny smaller";
  if (plane * grid.nz >= kLimit && !can_be_streamed(run))
    return "has 2^31 voxels or more; make nx, ny or nz smaller, or run it with --fast or --stream" +
           why_not_streamed(run);
  return "";
}

void require_usable_grid(const Run& run) {
  const Grid& grid = run.grid;
  const std::string why = refusal(run);
  if (!why.empty()) {
    const cpx* no_volume = nullptr;
    check(no_volume, "N");
    diagnostics::fail(run.place("a grid of " + sizes_of(grid) + " samples " + why));
  }
  if (grid.nx != grid.ny)
    diagnostics::warn(
        run.place("nx = " + std::to_string(grid.nx) + " and ny = " + std::to_string(grid.ny) +
                  " differ; the index volume and the files then have rows of another step than the "
                  "field, and the spectrum is that of a sheared slice"));
}

void report_frequencies(const Log& log, char axis, double extent, double spacing) {
  const double df = 1.0 / extent;
  const double f_max = 1.0 / spacing;
  log << "\tdone."
      << "\tdf" << axis << "=" << df / 1000000.0 << "MHz, fmax_" << axis << "=" << f_max / 1000000.0
      << "MHz, flim_" << axis << "=" << (0.5 * f_max) / 1000000.0 << "MHz, dtheta_" << axis << "="
      << std::asin(df / f_max) * 180.0 / kPi << "°" << std::endl;
}

// A negative n is an allocation that fails, and the report goes on.
void check_size(int n, const char* name) {
  const double* none = nullptr;
  if (n < 0) check(none, name);
}

}  // namespace

void read_configuration(Run& run) {
  const Options& options = run.options;
  const Log& log = run.log;
  log << std::endl << "Initialization ..." << std::endl;
  options.require_value("i", "config-file");
  run.initTimer.start();
  log << "\tConfiguration file ...\t\t" << options.config_file << std::endl;
  log << "\tParsing ... \t\t" << options.config_file << std::endl;
  read_description(options.config_file, options.overrides, run.description, log.is_quiet());
  if (!options.field_file.empty()) {
    Monitor whole_field;
    whole_field.file = options.field_file;
    run.description.monitors.push_back(whole_field);
  }
  advise(run.description);
  log << "\tParsing ... \t\tdone." << std::endl << std::endl;

  const struct_sysOptions& so = run.description.so;
  if (so.hfield) log << "\tMagnetic field ...\t" << so.hfield << std::endl;
  log << "\tEvanescent modes ...\t" << so.evanescent << std::endl;
  run.lambda = vacuum_wavelength(run.description.waves, so.f);
  run.k0 = kTwoPi / run.lambda;
  require_wpm(run);
  report_polarization(run);
}

void lay_out_sampling(Run& run) {
  const Log& log = run.log;
  run.grid = Grid(run.description.so);
  const Grid& grid = run.grid;
  const ranks::Share rows = ranks::share(grid.ny);
  run.window = {rows.begin, rows.end, 0, grid.nz};
  if (refusal(run).empty()) run.axes = wpm::Axes(grid);

  log << "\t\tSpace X ...";
  check_size(grid.nx, "X");
  log << "\tdone."
      << "\tnx=" << grid.nx << ", dx=" << grid.dx << "m"
      << ", ax=" << grid.ax() << "m" << std::endl;

  log << "\t\tSpace Y ...";
  check_size(grid.ny, "Y");
  log << "\tdone."
      << "\tny=" << grid.ny << ", dy=" << grid.dy << "m"
      << ", ay=" << grid.ay() << "m" << std::endl;

  log << "\t\tSpace Z ...\tdone."
      << "\tnz=" << grid.nz << ", dz=" << grid.dz << "m"
      << ", az=" << grid.az() << "m" << std::endl;

  log << "\t\tFreq X ...";
  check_size(grid.nx, "KX");
  report_frequencies(log, 'x', grid.ax(), grid.dx);

  log << "\t\tFreq Y ...";
  check_size(grid.ny, "KY");
  report_frequencies(log, 'y', grid.ay(), grid.dy);
  log << "\tSampling ... \t\tdone." << std::endl << std::endl;
  require_usable_grid(run);
}
