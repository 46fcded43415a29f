// A stack of layers in memory, with three different spacings.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "system/index_stack.h"

struct Painted {
  Painted(int nx, int ny, int nz, std::vector<struct_layer> layers_) : layers(std::move(layers_)) {
    so.nx = nx, so.ny = ny, so.nz = nz;
    so.f = 1e-6, so.dx = 0.75, so.dy = 1.25, so.dz = 0.5;
    build();
  }
  void build() { stack.emplace(so, layers, true); }

  [[nodiscard]] std::vector<cpx> paint(const Window& window) const {
    const int voxels = std::max(so.nx, 1) * window.rows() * window.slices();
    std::vector<cpx> N(static_cast<std::size_t>(voxels), cpx(-7.0, 7.0));
    stack->paint(N.data(), window);
    return N;
  }
  [[nodiscard]] std::vector<cpx> slice(int k) const { return paint({0, so.ny, k, k + 1}); }

  // The share of the first material, (2, 0.02) in (1, 0.01), in units of a voxel.
  [[nodiscard]] double share(const Window& window) const {
    double sum = 0.0;
    for (const cpx& n : paint(window)) sum += n.real() - 1.0;
    return sum;
  }

  struct_sysOptions so;
  std::vector<struct_layer> layers;
  std::optional<IndexStack> stack;
};
