// Scenes observed by monitors.
#pragma once

#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <sstream>

#include "constants.h"
#include "io/io.h"
#include "support/process.h"
#include "support/scene.h"

// Monitors have lengths in um.
inline Grid grid_of(const Scene& scene) {
  Grid grid;
  grid.nx = scene.nx;
  grid.ny = scene.ny;
  grid.nz = scene.nz;
  grid.dx = scene.dx;
  grid.dy = scene.dy;
  grid.dz = scene.dz;
  grid.metres = 1e-6;
  return grid;
}

inline Slice slice_of(Scene& scene, int k) {
  const std::size_t first = scene.index(k, 0, 0);
  return {&scene.E[first], &scene.F[first], &scene.N[first]};
}

inline RunContext context_of(const Scene& scene) {
  RunContext run;
  run.configuration = "a.cfg";
  run.text = "[global]\nnx = 8\n[/global]\n";
  run.options = "-i a.cfg -p";
  run.version = "Version 0.10";
  run.k0 = scene.k0;
  run.lambda = kTwoPi / scene.k0;
  return run;
}

inline std::unique_ptr<Sink> monitor_of(const Scene& scene, const Monitor& monitor) {
  return std::move(make_monitors({monitor}, grid_of(scene), context_of(scene)).at(0));
}

// The sink gets what it requires. Everything else is NaN.
inline void show(Sink& sink, int k, const Slice& whole, int nx, int ny) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  const auto plane = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
  std::vector<cpx> E(plane, {kNan, kNan}), N = E;
  std::vector<double> F(plane, kNan);
  const SliceRequest parts = sink.required(k);
  for (int j = parts.first_row; j < std::min(parts.end_row, ny); ++j)
    for (int i = parts.first_column; i < std::min(parts.end_column, nx); ++i) {
      const auto s = static_cast<std::size_t>(j * nx + i);
      if (parts.E) E[s] = whole.E[s];
      if (parts.F) F[s] = whole.F[s];
      if (parts.N) N[s] = whole.N[s];
    }
  Slice shown = {E.data(), F.data(), N.data()};
  shown.flux = kNan;
  if (parts.flux) shown.flux = std::accumulate(whole.F, whole.F + plane, 0.0);
  sink.take(k, shown);
}

inline void show(Sink& sink, Scene& scene, int k) {
  show(sink, k, slice_of(scene, k), scene.nx, scene.ny);
}

inline void observe(Sink& sink, Scene& scene, int first = 0) {
  for (int k = first; k < scene.nz; ++k) show(sink, scene, k);
  sink.finish();
}

// The columns of a table, without units.
struct TableContents {
  std::vector<std::string> names;
  std::vector<std::vector<double>> rows;

  explicit TableContents(const std::string& text) : rows(csv_rows(text)) {
    std::istringstream header(text.substr(0, text.find('\n')));
    for (std::string name; std::getline(header, name, ',');)
      names.push_back(name.substr(0, name.find(" [")));
    if (!rows.empty()) rows.erase(rows.begin());
  }
  [[nodiscard]] double at(std::size_t row, const std::string& name) const {
    for (std::size_t i = 0; i < names.size(); ++i)
      if (names[i] == name && row < rows.size()) return rows[row].at(i);
    ADD_FAILURE() << "no row " << row << " of column " << name;
    return std::nan("");
  }
};

// A monitor of a type, with its file in the directory.
inline Monitor monitor(MonitorType type, const TempDir& directory, const std::string& name) {
  Monitor m;
  m.type = type;
  m.file = directory.path(name).string();
  m.line = 7;
  return m;
}

// A run that stops after any slice and resumes in another process leaves the same bytes.
inline void expect_resuming(Scene& scene, Monitor m, const TempDir& directory) {
  m.file = directory.path("whole").string();
  observe(*monitor_of(scene, m), scene);
  m.file = directory.path("again").string();
  for (int stop = 0; stop < scene.nz; ++stop) {
    const auto first = monitor_of(scene, m), second = monitor_of(scene, m);
    for (int k = 0; k <= stop; ++k) show(*first, scene, k);
    const SinkState state = first->save();
    if (stop + 1 < scene.nz) show(*first, scene, stop + 1);
    second->restore(state);
    observe(*second, scene, stop + 1);
    EXPECT_EQ(directory.read("again"), directory.read("whole")) << "stopped after slice " << stop;
  }
}
