// Indices from HDF5 files, written here with the library itself.
#include <gtest/gtest.h>
#include <hdf5.h>

#include <array>
#include <cmath>
#include <set>

#include "painted.h"
#include "support/errors.h"

namespace {

// A data set of doubles, [nz][ny][nx] or with a 2 behind, with its sampling if there is one.
void write(const std::string& name, const std::vector<hsize_t>& shape,
           const std::vector<double>& values, const std::array<double, 6>* spacing_origin) {
  const hid_t file = H5Fcreate(name.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT);
  const hid_t space = H5Screate_simple(static_cast<int>(shape.size()), shape.data(), nullptr);
  const hid_t set =
      H5Dcreate2(file, "/n", H5T_NATIVE_DOUBLE, space, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT);
  H5Dwrite(set, H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data());
  const hsize_t three = 3;
  const hid_t triple = H5Screate_simple(1, &three, nullptr);
  for (int i = 0; i < 2 && spacing_origin != nullptr; ++i) {
    const hid_t attribute = H5Acreate2(set, i == 0 ? "Spacing" : "Origin", H5T_NATIVE_DOUBLE,
                                       triple, H5P_DEFAULT, H5P_DEFAULT);
    H5Awrite(attribute, H5T_NATIVE_DOUBLE, spacing_origin->data() + 3 * i);
    H5Aclose(attribute);
  }
  H5Sclose(triple), H5Sclose(space), H5Dclose(set), H5Fclose(file);
}

struct_layer of_file(const std::string& name, double z = 0) {
  return {.t = INDEX_FILE, .z = z, .file = name, .line = 12};
}

// What a monitor would save of a stack: index and extinction, in metres from the middle.
void write_index(const std::string& name, const Painted& painted) {
  const Window w = painted.stack->whole();
  const std::vector<cpx> N = painted.paint(w);
  std::vector<double> values;
  for (const cpx& n : N) values.insert(values.end(), {n.real(), n.imag()});
  const Grid& g = painted.stack->grid();
  const std::array<double, 6> sampling = {g.dx, g.dy, g.dz, g.x(0), g.y(0), 0};
  write(name, {hsize_t(w.slices()), hsize_t(g.ny), hsize_t(g.nx), 2}, values, &sampling);
}

TEST(IndexFile, GivesBackWhatWasSavedToTheBit) {
  struct_layer lens = {.t = LENS, .z = 3, .r = -2.6, .n = 1.5, .k = 0.01, .ne = 1.1, .levels = 50};
  struct_layer guide = {.t = WGUIDE, .x = 0.3, .z = 2, .r = 2, .n = 1.7, .ne = 1.2, .ke = 0.3};
  const Painted first(9, 9, 10, {lens, guide});
  write_index("saved.h5", first);
  const std::vector<cpx> saved = first.paint({0, 9, 0, 10});
  for (const bool interpolates : {false, true}) {
    struct_layer l = of_file("saved.h5");
    l.interpolate = interpolates;
    const Painted again(9, 9, 12, {{.z = 1, .n = 3}, l});
    EXPECT_EQ(again.so.izlast, 12);
    EXPECT_EQ(again.paint({0, 9, 2, 12}), saved);
    EXPECT_EQ(again.slice(5), first.slice(3));
    EXPECT_EQ(again.slice(1)[40], cpx(3.0));
    for (int k = 3; k < 12; ++k)  // the guide's slices are one stretch again
      EXPECT_EQ(again.stack->stretch(k) == again.stack->stretch(k - 1),
                first.slice(k - 2) == first.slice(k - 3));
  }
  // Moved by two samples, and painted over another inside its own bounds only.
  struct_layer moved = of_file("saved.h5", 2);
  moved.offsetx = 1.5, moved.over = true;
  const Painted over(9, 9, 8, {{.z = 3, .n = 3}, moved});
  const std::vector<cpx> slice = over.slice(1);
  for (std::size_t i = 0; i < 81; ++i)
    EXPECT_EQ(slice[i], i % 9 < 2 ? cpx(3.0) : first.slice(1)[i - 2]) << i;
  EXPECT_EQ(over.slice(5), std::vector<cpx>(81, 3.0));
}

// n = 1 + x/32 + y/16 + z/8 in the file's samples. They lie wider apart than ours, or closer, and
// then the outermost ones go on.
TEST(IndexFile, TakesTheNearestSampleOrInterpolates) {
  std::vector<double> ramp;
  for (int k = 0; k < 5; ++k)
    for (int j = 0; j < 6; ++j)
      for (int i = 0; i < 8; ++i) ramp.push_back(1 + i / 32.0 + j / 16.0 + k / 8.0);
  write("ramp.h5", {5, 6, 8}, ramp, nullptr);
  struct_layer l = of_file("ramp.h5", 2.5);
  l.levels = 65536;
  for (const double width : {0.3, 1.0})
    for (const bool interpolates : {false, true}) {
      l.file_dx = 0.75 * 1.5 * width, l.file_dy = 1.25 * 2 * width, l.file_dz = 0.5 * 1.25 * width;
      l.interpolate = interpolates;
      const Painted painted(8, 8, 5, {l});
      const auto place = [&](double at, double spacing, double middle, int n) {
        const double p = std::clamp(at / (spacing * width) + middle, 0.0, n - 1.0);
        return interpolates ? p : std::nearbyint(p);
      };
      for (int k = 0; k < 5; ++k) {
        const std::vector<cpx> slice = painted.slice(k);
        for (int j = 0; j < 8; ++j)
          for (int i = 0; i < 8; ++i)
            EXPECT_NEAR(slice[std::size_t(8 * j + i)].real(),
                        1 + place(i - 4, 1.5, 4, 8) / 32 + place(j - 4, 2, 3, 6) / 16 +
                            place(k, 1.25, 0, 5) / 8,
                        1e-5)
                << k << j << i << width;
      }
    }
  // Few levels: an error of half a step at most.
  l.levels = 9;
  std::set<double> values;
  for (const cpx& n : Painted(8, 8, 5, {l}).paint({0, 8, 0, 5})) values.insert(n.real());
  EXPECT_LE(values.size(), 9U);
  EXPECT_GE(values.size(), 7U);
  l.levels = 1;
  for (const cpx& n : Painted(8, 8, 5, {l}).slice(2))
    EXPECT_NEAR(n.real(), 1 + (7 / 32.0 + 5 / 16.0 + 4 / 8.0) / 2, 1e-15);
}

TEST(IndexFile, HoldsPermittivitiesWhereLayersDo) {
  write("eps.h5", {1, 1, 2, 2}, {4, 0, 2.21, 0.6}, nullptr);
  struct_layer l = of_file("eps.h5", 1);
  l.file_dx = l.file_dy = 1;
  Painted painted(2, 2, 2, {{.z = 1}});
  painted.so.permittivity = true, painted.layers = {l}, painted.so.dx = 1;
  painted.build();
  EXPECT_EQ(painted.slice(0)[0], cpx(2.0));
  EXPECT_NEAR(std::abs(painted.slice(1)[1] - cpx(1.5, 0.2)), 0, 1e-15);
}

TEST(IndexFile, SaysWhatIsWrongAndWhere) {
  write("bare.h5", {1, 2, 2}, {1, 1, 1, 1}, nullptr);
  const std::array<double, 6> sampling = {1e-6, 1e-6, 1e-6, 0, 0, 0};
  write("nan.h5", {2, 1, 2}, {1, 1, 1, std::nan("")}, &sampling);
  const auto paint = [](const std::string& name) { Painted(4, 4, 4, {of_file(name)}); };
  EXPECT_ERROR(paint("bare.h5"), "line 12: bare.h5:/n has no.*dx, dy");
  EXPECT_ERROR(paint("nan.h5"), "not finite, at slice 1");
  EXPECT_ERROR(paint("none.h5"), "no such file");
}

}  // namespace
