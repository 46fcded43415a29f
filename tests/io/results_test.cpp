#include "io/io.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/process.h"

namespace {

std::vector<cufftDoubleComplex> converted(const std::vector<cpx>& field) {
  std::vector<cufftDoubleComplex> device(field.size());
  convert(field.data(), device.data(), static_cast<int>(field.size()));
  return device;
}

TEST(CrossSections, HoldTheChosenPlanesInTheirLayout) {
  struct Case {
    int nz, ny, nx;
    plane p, partner;
    int s;
    const char* text;
  };
  // Element (x, y, z) of a 2 x 2 x 3 volume is x + 2y + 4z. Rows step by ny, also if the grid is
  // not square. Elements outside the array read 0.
  const Case kCases[] = {
      {3, 2, 2, XY, YX, 2, "8,9,\n10,11,\n\n"},
      {3, 2, 2, XY, YX, -1, "0,1,\n2,3,\n\n4,5,\n6,7,\n\n8,9,\n10,11,\n\n"},
      {3, 2, 2, XZ, ZX, 1, "2,3,\n6,7,\n10,11,\n\n"},
      {3, 2, 2, YZ, ZY, 1, "1,3,\n5,7,\n9,11,\n\n"},
      {3, 2, 2, XY, YX, 3, "00\n00\n\n"},  // no separators at and beyond nz
      {3, 2, 2, XY, YX, 2147483647, "00\n00\n\n"},
      {3, 2, 2, XZ, ZX, 2, "4,5,\n8,9,\n0,0,\n\n"},  // beyond ny is the next slice
      {3, 2, 2, YZ, ZY, -2147483647, "0,0,\n0,0,\n0,0,\n\n"},
      {1, 2, 4, XY, YX, 0, "0,1,2,3,\n2,3,4,5,\n\n"},
      {1, 4, 2, XY, YX, 0, "0,1,\n4,5,\n0,0,\n0,0,\n\n"},
      {2, 1, 3, YZ, ZY, -1, "0,\n3,\n\n1,\n4,\n\n2,\n5,\n\n"},
      {0, 2, 2, XZ, ZX, 0, "\n"},
      {1, 1, 1, plane(9), plane(9), 0, "0,\n\n"},
  };
  const TempDir directory;  // files are replaced
  const std::string name = directory.path("a.csv").string();
  for (const auto& [nz, ny, nx, p, partner, s, text] : kCases) {
    SCOPED_TRACE(text);
    std::vector<double> numbers;
    std::vector<cpx> field;
    for (int i = 0; i < nz * ny * nx; ++i) numbers.push_back(i), field.emplace_back(i, -1);
    store_array(numbers.data(), nz, ny, nx, name, p, s);
    EXPECT_EQ(directory.read("a.csv"), text);
    store_array(field.data(), nz, ny, nx, name, partner, s);
    EXPECT_EQ(directory.read("a.csv"), text);
    store_array(converted(field).data(), nz, ny, nx, name, p, s);
    EXPECT_EQ(directory.read("a.csv"), text);
  }
}

double compared(const std::vector<cpx>& gpu, const std::vector<cpx>& cpu, int nz, int ny, int nx) {
  return compare(converted(gpu).data(), cpu.data(), nz, ny, nx);
}

// The largest |gpu - cpu| / |cpu|. A NaN, also from 0/0, does not count. Anything but zero over
// zero is infinite.
TEST(Comparison, IsTheLargestRelativeErrorOfAnyVoxel) {
  const std::vector<cpx> odd = {0.0, {HUGE_VAL, 1}, {NAN, 0}, {3, 4}, {1, HUGE_VAL}, -2.0};
  EXPECT_EQ(compared(odd, odd, 1, 2, 3), 0.0);
  EXPECT_EQ(compared({{0, 1}, 1.0}, {1.0, 1.0}, 2, 1, 1), std::sqrt(2.0));
  EXPECT_EQ(compared({1.0, 1e-300}, {1.0, 0.0}, 1, 1, 2), HUGE_VAL);
  EXPECT_EQ(compared({NAN, 3.0, NAN}, {1.0, 2.0, 1.0}, 1, 3, 1), 0.5);
  const std::vector<cpx> cpu(24, 2.0);
  std::vector<cpx> gpu = cpu;
  gpu.back() = 0.0;  // every voxel is visited, on grids of any shape
  EXPECT_EQ(compared(gpu, cpu, 4, 3, 2), 1.0);
  EXPECT_EQ(compared(gpu, cpu, 1, 23, 1), 0.0);
  for (const int none : {0, -1}) EXPECT_EQ(compared(gpu, cpu, 1, none, 3), 0.0);
}

TEST(Results, PowersOfTwoAndConversion) {
  const std::pair<double, int> kPowers[] = {{-3, 1},      {1, 1},         {1.5, 2},
                                            {1024, 1024}, {1024.5, 2048}, {NAN, 1}};
  for (const auto& [x, power] : kPowers) EXPECT_EQ(nextpow2(x), power) << x;
  const cpx from(1, 2);
  cufftDoubleComplex to = {7, 7};
  convert(&from, &to, -1);
  EXPECT_EQ(to.x, 7.0);
}

}  // namespace
