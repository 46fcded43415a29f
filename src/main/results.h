// The files in which a run's arrays and numbers leave the system, and the comparison of two fields.
// A file that cannot be opened or fully written draws a warning and the run goes on.
#pragma once

#include <cufft.h>

#include <string>

#include "system/system.h"

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
// milliseconds; -1 for a field that does not apply. The speed-up is cpuTime / kernelTime.
void store_results(std::string filename, std::string cfile, int kernel, int blockSize, int nz,
                   int ny, int nx, double kernelTime, double cpuTime, double err);

// The largest |(gpu - cpu) / cpu| over [nz][ny][nx]. Infinite where cpu alone is 0; a NaN, also of
// 0/0, never counts.
double compare(const cufftDoubleComplex* gpu, const cpx* cpu, int nz, int ny, int nx);

// The smallest power of two, from 1 on, that is not below x; 2^30 for x above it.
int nextpow2(double x);
