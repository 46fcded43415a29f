// The stages that bring the three volumes into being and export them.
#include "main/results.h"
#include "main/stages.h"

void build_volumes(Run& run) {
  const Log& log = run.log;
  run.N = allocate_complex(run.voxels(), "N");
  log << "\tSystem ..." << std::endl;
  init_N(run.N, run.so, run.lv, run.is_quiet);
  log << "\tSystem ... \t\tdone." << std::endl << std::endl;

  log << "\tEnergy flux ... \t";
  run.F = allocate_doubles(run.voxels(), "F");
  init_0(run.F, run.so, run.is_quiet);
  log << "\tEnergy flux ... \tmemory allocated." << std::endl;

  log << "\tWave ..." << std::endl;
  run.E = allocate_complex(run.voxels(), "E");
  run.lambda = init_E(run.E, run.F, run.N, run.so, run.fv, run.is_quiet);
  log << "\tWave ... \t\tdone." << std::endl << std::endl;
  log << "\t         \t\tlambda = " << run.lambda << std::endl << std::endl;

  delete run.lv;
  delete run.fv;
  delete run.so;
  run.lv = nullptr;
  run.fv = nullptr;
  run.so = nullptr;

  run.initTimer.stop();
  log << "Initialization ... \t\t";
  log_timed(log, run.initTimer);
  log << std::endl;
}

void export_inputs(Run& run) {
  int p_int = -1;
  run.read_option(&p_int, "x", "cross-section");
  if (p_int == 1)
    run.p = XZ;
  else if (p_int == 2)
    run.p = YZ;
  else
    run.p = DEFAULT_PLANE;
  run.read_option(&run.s, "l", "layer");

  store_array(run.N, run.nz, run.ny, run.nx, "N_sys.csv", run.p, run.s);
  store_array(run.E, run.nz, run.ny, run.nx, "E_inp.csv", run.p, run.s);
  store_array(run.F, run.nz, run.ny, run.nx, "F_inp.csv", run.p, run.s);
  run.k0 = 6.2831853 / run.lambda;
}
