#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "fftw++.h"
#include "io/io.h"
#include "measure.h"

namespace bench {

void planning() {
  std::printf("planning a transform (FFTW_MEASURE), without wisdom and with it\n");
  std::printf("%8s %12s %10s\n", "side", "without ms", "with ms");
  fftwpp::fftw::Wise = true;  // this process's own wisdom, not that of a file
  for (const unsigned side : {64U, 256U, 1024U}) {
    std::vector<cpx> S(static_cast<std::size_t>(side) * side);
    const auto plan = [&] { const fftwpp::fft2d forward(side, side, -1, nullptr, S.data()); };
    const double without = median_seconds(
        [&] {
          fftw_forget_wisdom();
          plan();
        },
        3);
    std::printf("%8u %12.1f %10.2f\n", side, without * 1e3, median_seconds(plan, 5) * 1e3);
  }
}

namespace {

// The sink of a field monitor against a plain write of as many bytes to a file,
// both as far as the disk's cache.
void field_files() {
  if (!writes_field_files()) {
    std::printf("field files: built without HDF5\n");
    return;
  }
  constexpr int kSide = 512;
  constexpr int kSlices = 100;
  Grid grid;
  grid.nx = grid.ny = kSide;
  grid.nz = kSlices;
  grid.dx = grid.dy = grid.dz = 1e-7;
  std::vector<cpx> E(grid.plane());
  for (std::size_t s = 0; s < E.size(); ++s) E[s] = std::polar(1.0, static_cast<double>(s));
  std::vector<double> F(grid.plane(), 1.0);
  const std::vector<cpx> N(grid.plane(), 1.5);
  const std::size_t slice_bytes = E.size() * sizeof(cpx);

  std::printf("files of the field, %d slices of %d x %d samples, E\n", kSlices, kSide, kSide);
  std::printf("%10s %12s %12s %10s\n", "precision", "ms a slice", "plain write", "ratio");
  for (const bool is_single : {false, true}) {
    Monitor monitor;
    monitor.file = "bench_field.h5";
    monitor.is_single = is_single;
    const auto by_zerith = [&] {
      const auto sinks = make_monitors({monitor}, grid, RunContext{});
      for (int k = 0; k < kSlices; ++k) sinks[0]->take(k, {E.data(), F.data(), N.data()});
      sinks[0]->finish();
    };
    const std::size_t bytes = is_single ? slice_bytes / 2 : slice_bytes;
    const auto plainly = [&] {
      std::FILE* file = std::fopen("bench_plain", "wb");
      for (int k = 0; k < kSlices; ++k)
        if (std::fwrite(E.data(), bytes, 1, file) != 1) std::exit(1);
      if (std::fclose(file) != 0) std::exit(1);
    };
    const Pair pair = compare(by_zerith, plainly, 7);
    if (std::filesystem::file_size("bench_field.h5") < bytes * kSlices) {
      std::printf("the file of the field is too short\n");
      std::exit(1);
    }
    std::printf("%10s %12.2f %12.2f %10.2f\n", is_single ? "single" : "double",
                pair.a * 1e3 / kSlices, pair.b * 1e3 / kSlices, pair.ratio);
  }
  std::filesystem::remove("bench_field.h5");
  std::filesystem::remove("bench_plain");
}

}  // namespace

void csv() {
  constexpr int kSide = 256;
  constexpr int kSlices = 8;
  std::vector<double> values(static_cast<std::size_t>(kSide) * kSide * kSlices);
  for (std::size_t s = 0; s < values.size(); ++s)
    values[s] = std::sin(static_cast<double>(s)) * std::exp(0.00001 * static_cast<double>(s));

  const auto by_stream = [&] {
    std::ofstream file("bench_stream.csv");
    for (int k = 0; k < kSlices; ++k) {
      for (int j = 0; j < kSide; ++j) {
        for (int i = 0; i < kSide; ++i)
          file << values[static_cast<std::size_t>((k * kSide + j) * kSide + i)] << ",";
        file << std::endl;
      }
      file << std::endl;
    }
  };
  const auto by_zerith = [&] {
    store_array(values.data(), kSlices, kSide, kSide, "bench_zerith.csv", XY, -1);
  };
  const Pair pair = compare(by_stream, by_zerith, 5);
  const auto contents = [](const char* name) {
    std::ostringstream text;
    text << std::ifstream(name).rdbuf();
    return text.str();
  };
  if (contents("bench_stream.csv") != contents("bench_zerith.csv")) {
    std::printf("the two files differ\n");
    std::exit(1);
  }
  const auto bytes = static_cast<double>(std::filesystem::file_size("bench_zerith.csv"));
  std::printf(
      "cross-section files: %.1f million values a second, %.0f MB/s; a stream flushed by "
      "the row takes %.1f times as long\n",
      static_cast<double>(values.size()) / pair.b / 1e6, bytes / pair.b / 1e6, pair.ratio);
  std::filesystem::remove("bench_stream.csv");
  std::filesystem::remove("bench_zerith.csv");
  field_files();
}

}  // namespace bench
