#include "main/results.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/process.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The file of an array whose elements are their own numbers, by each of the three overloads.
std::string stored(int nz, int ny, int nx, plane p, int s) {
  const auto count = static_cast<std::size_t>(nz * ny * nx);
  std::vector<double> numbers(count);
  std::vector<cpx> field(count);
  std::vector<cufftDoubleComplex> device(count);
  for (std::size_t i = 0; i < count; ++i) {
    numbers[i] = static_cast<double>(i);
    field[i] = {numbers[i], -1.0};
  }
  convert(field.data(), device.data(), static_cast<int>(count));
  static const TempDir directory;  // files are replaced
  const std::string name = directory.path("a.csv").string();
  store_array(numbers.data(), nz, ny, nx, name, p, s);
  const std::string text = directory.read("a.csv");
  store_array(field.data(), nz, ny, nx, name, p, s);
  EXPECT_EQ(directory.read("a.csv"), text);
  store_array(device.data(), nz, ny, nx, name, p, s);
  EXPECT_EQ(directory.read("a.csv"), text);
  return text;
}

TEST(CrossSections, HoldTheChosenPlanesInTheirLayout) {
  struct Case {
    int nz, ny, nx;
    plane p;
    int s;
    const char* text;
  };
  // Element (x, y, z) of a 2 x 2 x 3 volume is x + 2y + 4z. On grids that are not square the rows
  // step by ny all the same; what lies outside the array reads 0.
  for (const Case& c : {
           Case{3, 2, 2, XY, 0, "0,1,\n2,3,\n\n"},
           {3, 2, 2, XY, 2, "8,9,\n10,11,\n\n"},
           {3, 2, 2, XY, -1, "0,1,\n2,3,\n\n4,5,\n6,7,\n\n8,9,\n10,11,\n\n"},
           {3, 2, 2, XZ, 0, "0,1,\n4,5,\n8,9,\n\n"},
           {3, 2, 2, XZ, 1, "2,3,\n6,7,\n10,11,\n\n"},
           {3, 2, 2, XZ, -1, "0,1,\n4,5,\n8,9,\n\n2,3,\n6,7,\n10,11,\n\n"},
           {3, 2, 2, YZ, 1, "1,3,\n5,7,\n9,11,\n\n"},
           {3, 2, 2, YZ, -1, "0,2,\n4,6,\n8,10,\n\n1,3,\n5,7,\n9,11,\n\n"},
           {3, 2, 2, XY, 3, "00\n00\n\n"},  // no separators at and beyond nz
           {3, 2, 2, XY, 2147483647, "00\n00\n\n"},
           {3, 2, 2, XY, -2, "0,0,\n0,0,\n\n"},
           {3, 2, 2, XZ, 9, "0,0,\n0,0,\n0,0,\n\n"},
           {3, 2, 2, XZ, 2, "4,5,\n8,9,\n0,0,\n\n"},  // beyond ny lies the next slice
           {3, 2, 2, YZ, -2147483647, "0,0,\n0,0,\n0,0,\n\n"},
           {1, 2, 4, XY, 0, "0,1,2,3,\n2,3,4,5,\n\n"},
           {1, 4, 2, XY, 0, "0,1,\n4,5,\n0,0,\n0,0,\n\n"},
           {2, 1, 3, XZ, 0, "0,1,2,\n3,4,5,\n\n"},
           {2, 1, 3, YZ, -1, "0,\n3,\n\n1,\n4,\n\n2,\n5,\n\n"},
           {0, 2, 2, XY, 0, ""},
           {0, 2, 2, XZ, 0, "\n"},
       }) {
    EXPECT_EQ(stored(c.nz, c.ny, c.nx, c.p, c.s), c.text) << c.p << " " << c.s;
    const plane partner = c.p == XY ? YX : c.p == XZ ? ZX : ZY;
    EXPECT_EQ(stored(c.nz, c.ny, c.nx, partner, c.s), c.text);
  }
  EXPECT_EQ(stored(1, 1, 1, static_cast<plane>(9), 0), "0,\n\n");
}

TEST(RunRecord, HasOneHeaderAndTenColumns) {
  const TempDir directory;
  const std::string name = directory.path("r.csv").string();
  store_results(name, "a;b.cfg", 0, 16, 3, 4, 5, 2.0, -1.0, -1.0);
  store_results(name, "c.cfg", 1, 32, 6, 7, 8, 2.5, 1e7, kInf);
  store_results(name, "", 0, 0, 0, 0, 0, 0.0, -1.0, kNaN);
  EXPECT_EQ(directory.read("r.csv"),
            "cfile;kernel_id;block_size;nz;ny;nx;kernel_time;cpu_time;err-max;speed-up\n"
            "a;b.cfg;0;16;3;4;5;2;-1;-1;-0.5\n"
            "c.cfg;1;32;6;7;8;2.5;1e+07;inf;4e+06\n"
            ";0;0;0;0;0;0;-1;nan;-inf\n");
  directory.write("other", "not a record\n");
  store_results(directory.path("other").string(), "c", 0, 16, 1, 1, 1, 1.0, 1.0, 0.0);
  EXPECT_EQ(directory.read("other"), "not a record\nc;0;16;1;1;1;1;1;0;1\n");
}

double compared(const std::vector<cpx>& gpu, const std::vector<cpx>& cpu, int nz, int ny, int nx) {
  std::vector<cufftDoubleComplex> device(gpu.size());
  convert(gpu.data(), device.data(), static_cast<int>(gpu.size()));
  return compare(device.data(), cpu.data(), nz, ny, nx);
}

// The largest |gpu - cpu| / |cpu|. A NaN, also that of 0/0, does not count, and anything but zero
// over zero is infinite.
TEST(Comparison, IsTheLargestRelativeErrorOfAnyVoxel) {
  const std::vector<cpx> odd = {0.0, {kInf, 1}, {kNaN, 0}, {3, 4}, {1, kInf}, -2.0};
  EXPECT_EQ(compared(odd, odd, 1, 2, 3), 0.0);
  EXPECT_EQ(compared({{0, 1}, 1.0}, {1.0, 1.0}, 2, 1, 1), std::sqrt(2.0));
  EXPECT_EQ(compared({1.0, 1e-300}, {1.0, 0.0}, 1, 1, 2), kInf);
  EXPECT_EQ(compared({1.0, {0, -1}}, {1.0, 0.0}, 1, 2, 1), kInf);
  EXPECT_EQ(compared({kNaN, 3.0}, {1.0, 2.0}, 1, 2, 1), 0.5);
  std::vector<cpx> cpu, gpu;
  for (int i = 0; i < 24; ++i) {
    cpu.emplace_back(i + 1, -i);
    gpu.push_back(cpu.back() * (1.0 + 0x1p-20));
  }
  EXPECT_NEAR(compared(gpu, cpu, 2, 3, 4), 0x1p-20, 1e-15);
  gpu.back() = 0.0;  // every voxel is visited, on grids of any shape
  EXPECT_EQ(compared(gpu, cpu, 4, 3, 2), 1.0);
  EXPECT_LT(compared(gpu, cpu, 1, 23, 1), 1.0);
  for (const int none : {0, -1}) EXPECT_EQ(compared(gpu, cpu, 1, none, 3), 0.0);
}

TEST(Results, PowersOfTwoAndConversion) {
  for (const auto& [x, power] : {std::pair(-3.0, 1),
                                 {0.0, 1},
                                 {1.0, 1},
                                 {1.5, 2},
                                 {5.0, 8},
                                 {1024.0, 1024},
                                 {1024.5, 2048},
                                 {0x1p30, 1 << 30},
                                 {kNaN, 1}})
    EXPECT_EQ(nextpow2(x), power) << x;
  const cpx from[] = {{1, 2}, {3, 4}};
  cufftDoubleComplex to[2] = {{7, 7}, {7, 7}};
  convert(from, to, -1);
  EXPECT_EQ(to[0].x, 7.0);
  convert(from, to, 1);
  EXPECT_EQ(std::tuple(to[0].x, to[0].y, to[1].x), std::tuple(1.0, 2.0, 7.0));
}

}  // namespace
