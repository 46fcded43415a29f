// Sweeps: the same simulation for every combination of some values, one process a point.
#pragma once

// Whether the command line asks for a sweep (--sweep).
bool is_sweep(int argc, char* argv[]);

// Runs the sweep and returns the exit status of the process: 0, or 1 if a point has failed, now or
// in an earlier run. A mistake
// in the options or in the names of what is swept ends the process with 255 before any point runs;
// SIGINT, SIGTERM and SIGHUP end the points that run, and then this process by the same signal.
int run_sweep(int argc, char* argv[]);
