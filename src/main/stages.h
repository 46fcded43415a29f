// The stages of a run, in the order in which main calls them.
#pragma once

#include "main/run.h"

constexpr const char* VERSION = "Version 0.10";

// Prints the help or the version if one is asked for, whatever started the process. Returns whether
// it was.
bool answer_help_and_version(int argc, char* argv[]);

// Joins the processes that were started together with this one; with --independent it stays alone.
void join_others(int argc, char* argv[]);

// Reads the configuration, reports what it asks for and refuses what cannot be done.
void read_configuration(Run& run);

// Lays out the axes and reports the sampling.
void lay_out_sampling(Run& run);

// Brings index and incident field into being, as volumes or, in a stream, as slices.
void build_scene(Run& run);

// The files that the run writes, but for monitors.
std::vector<std::string> outputs_of(const Run& run);

// Makes masks and monitors; warns of results that could not be written and of planes that lie
// outside.
void look_ahead(Run& run);

// With --check: prints what the run would be. Returns 0 or, if anything was warned of, 255.
int report_check(const Run& run);

// Before anything is written: refuses a run that would overwrite its own configuration or, with
// --strict, one that was warned of; finds where a stopped run resumes.
void secure_outputs(Run& run);

// Writes N_sys.csv, E_inp.csv and F_inp.csv.
void export_inputs(Run& run);

// Reports what is to be run and how.
void report_run_flags(const Run& run);

// Propagates on the device and writes E_gpu.csv, EFlux_gpu.csv and EFlux_gpu_Z.csv.
void run_on_device(Run& run);

// Propagates on the CPU and writes E_cpu.csv, EFlux_cpu.csv and EFlux_cpu_Z.csv.
void run_on_cpu(Run& run);

// Compares the device's field with the CPU's.
void compare_branches(Run& run);

// Removes the checkpoint of a run that came to its end.
void finish(const Run& run);

// --- What several stages use

// The help text on standard output; argv is the program's name as invoked.
void printHelp(const char* argv);

// "done. ", milliseconds, "ms", line end.
void log_timed(const Log& log, double milliseconds);

// Warns of a field, [nz][ny][nx], that has become zero or not finite on the way.
void check_field(const Run& run, const cpx* E);

// A row of the run record, if one is asked for.
void record_row(const Run& run, double kernel_ms, double cpu_ms, double error);
