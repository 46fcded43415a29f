// The scene of the runs: 8 x 8 samples of 0.5 um by 0.375 um and six slices of a sixth of the
// wavelength, in vacuum. A unit wave straight on is cos(k * 60 degrees) at slice k, and its flux is
// k0 throughout.
#pragma once

#include <string>

inline std::string configuration(const std::string& grid = "", const std::string& layer = "n = 1",
                                 const std::string& wave = "shape = plane") {
  return "[global]\nscale = um\npolarization = te\nx = 4\ny = 3\nz = 1\nnx = 8\nny = 8\nnz = 6\n" +
         grid + "\n[/global]\n[wave]\nlambda = 1\namp = 1\n" + wave +
         "\n[/wave]\n[layer]\nz = 1\n" + layer + "\n[/layer]\n";
}
