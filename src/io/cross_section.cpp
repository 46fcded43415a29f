#include <cstdint>
#include <utility>

#include "io/io.h"
#include "io/output_file.h"

namespace {

// A walk along one axis: so many places, so far apart in the array.
struct Axis {
  int count;
  std::int64_t step;
};

struct CrossSections {
  Axis planes, rows, columns;
  bool is_xy;
};

CrossSections cross_sections(plane p, int nz, int ny, int nx) {
  const Axis x = {nx, 1};
  const Axis y = {ny, ny};  // row step ny, not nx: the file format is defined so
  const Axis z = {nz, std::int64_t{nx} * ny};
  switch (p) {
    case XZ:
    case ZX:
      return {y, z, x, false};
    case YZ:
    case ZY:
      return {x, z, y, false};
    default:
      return {z, y, x, true};
  }
}

// value(i): element i of the array, as it is written.
template <typename Value>
void store(Value value, int nz, int ny, int nx, std::string filename, plane p, int s) {
  OutputFile file(std::move(filename));
  const std::int64_t count = std::int64_t{nx} * ny * nz;
  const CrossSections cut = cross_sections(p, nz, ny, nx);
  for (int place = 0; place < cut.planes.count; ++place) {
    if (s != -1) place = s;  // after the bound's test, so s itself meets no bound
    // Planes across z beyond the last have no separators.
    const bool has_separators = !cut.is_xy || place < nz;
    for (int row = 0; row < cut.rows.count; ++row) {
      for (int column = 0; column < cut.columns.count; ++column) {
        const std::int64_t index =
            place * cut.planes.step + row * cut.rows.step + column * cut.columns.step;
        file << (index >= 0 && index < count ? value(index) : 0.0);
        if (has_separators) file << ',';
      }
      file << '\n';
    }
    file << '\n';
    if (s != -1) break;
  }
}

}  // namespace

void store_array(const cpx* array, int nz, int ny, int nx, std::string filename, plane p, int s) {
  store([array](std::int64_t i) { return array[i].real(); }, nz, ny, nx, std::move(filename), p, s);
}

void store_array(const double* array, int nz, int ny, int nx, std::string filename, plane p,
                 int s) {
  store([array](std::int64_t i) { return array[i]; }, nz, ny, nx, std::move(filename), p, s);
}

void store_array(const cufftDoubleComplex* array, int nz, int ny, int nx, std::string filename,
                 plane p, int s) {
  store([array](std::int64_t i) { return array[i].x; }, nz, ny, nx, std::move(filename), p, s);
}

void convert(const cpx* src, cufftDoubleComplex* dest, int n) {
  for (int i = 0; i < n; ++i) {
    dest[i].x = src[i].real();
    dest[i].y = src[i].imag();
  }
}
