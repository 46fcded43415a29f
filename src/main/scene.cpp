// The stages that bring index and incident field into being and export them.
#include "diagnostics.h"
#include "io/io.h"
#include "main/memory.h"
#include "main/stages.h"
#include "main/streaming.h"
#include "ranks/ranks.h"

namespace {

// The arrays of slice 0, which is all that a stream holds of them here. Of several ranks the first
// has them; the others know their own rows when the run begins.
void prepare_stream(Run& run) {
  const Log& log = run.log;
  Description& d = run.description;
  const std::size_t plane = run.grid.plane();
  log << "\tSystem ..." << std::endl;
  run.stack = std::make_unique<IndexStack>(d.so, d.layers, log.is_quiet());
  if (!ranks::is_first()) return;
  run.N = HostArray<cpx>(plane, "N");
  run.stack->paint(run.N.data(), Window::slice(run.grid, 0));
  log << "\tSystem ... \t\tdone." << std::endl << std::endl;

  log << "\tEnergy flux ... \t";
  run.F = HostArray<double>(plane, "F");
  log << "memory initialized zero" << std::endl;
  log << "\tEnergy flux ... \tmemory allocated." << std::endl;

  log << "\tWave ..." << std::endl;
  run.E = HostArray<cpx>(plane, "E");
  lay_incident_field(run.E.data(), run.F.data(), run.N.data(), d.so, d.waves, log.is_quiet());
}

// The files of the inputs from painted slices; the incident field is 0 but for slice 0.
void store_from_slices(const Run& run) {
  const Options& o = run.options;
  const Grid& grid = run.grid;
  std::vector<cpx> N(grid.plane());
  int painted = -1;
  const auto index = [&](int k) -> const cpx* {
    if (painted < 0 || run.stack->stretch(k) != run.stack->stretch(painted))
      run.stack->paint(N.data(), Window::slice(grid, k));
    painted = k;
    return N.data();
  };
  const auto field = [&](int k) -> const cpx* { return k == 0 ? run.E.data() : nullptr; };
  const auto flux = [&](int k) -> const double* { return k == 0 ? run.F.data() : nullptr; };
  store_slices(index, grid, "N_sys.csv", o.p, o.layer);
  store_slices(field, grid, "E_inp.csv", o.p, o.layer);
  store_slices(flux, grid, "F_inp.csv", o.p, o.layer);
}

void prepare_volumes(Run& run) {
  const Log& log = run.log;
  Description& d = run.description;
  const std::size_t count = Frame(d.so).voxels();
  run.N = HostArray<cpx>(count, "N");
  log << "\tSystem ..." << std::endl;
  run.stack = std::make_unique<IndexStack>(d.so, d.layers, log.is_quiet());
  run.stack->paint(run.N.data(), run.stack->whole());
  log << "\tSystem ... \t\tdone." << std::endl << std::endl;

  log << "\tEnergy flux ... \t";
  run.F = HostArray<double>(count, "F");
  init_0(run.F.data(), &d.so, log.is_quiet());
  log << "\tEnergy flux ... \tmemory allocated." << std::endl;

  log << "\tWave ..." << std::endl;
  run.E = HostArray<cpx>(count, "E");
  init_E(run.E.data(), run.F.data(), run.N.data(), &d.so, &d.waves, log.is_quiet());
}

}  // namespace

void build_scene(Run& run) {
  const Log& log = run.log;
  run.is_streamed = can_be_streamed(run);
  if (run.is_streamed)
    prepare_stream(run);
  else
    prepare_volumes(run);
  log << "\tWave ... \t\tdone." << std::endl << std::endl;
  log << "\t         \t\tlambda = " << run.lambda << std::endl << std::endl;
  if (ranks::is_first()) run.entry_index = run.N.data()[0].real();

  run.initTimer.stop();
  log << "Initialization ... \t\t";
  log_timed(log, 1000.0 * run.initTimer.getTime());
  log << std::endl;
  const std::string why = why_not_streamed(run);
  if (!why.empty()) diagnostics::note("whole volumes are held" + why);
}

void export_inputs(Run& run) {
  if (!ranks::is_first()) return;
  const Options& options = run.options;
  options.require_value("x", "cross-section");
  options.require_value("l", "layer");
  const Grid& grid = run.grid;
  if (run.is_streamed) {
    store_from_slices(run);
    return;
  }
  store_array(run.N.data(), grid.nz, grid.ny, grid.nx, "N_sys.csv", options.p, options.layer);
  store_array(run.E.data(), grid.nz, grid.ny, grid.nx, "E_inp.csv", options.p, options.layer);
  store_array(run.F.data(), grid.nz, grid.ny, grid.nx, "F_inp.csv", options.p, options.layer);
}
