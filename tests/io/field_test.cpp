#include <gtest/gtest.h>
#include <hdf5.h>

#include <cmath>

#include "file_size_limit.h"
#include "io/observing.h"
#include "support/errors.h"

namespace {

// The field and the index differ at every sample.
Scene varied_scene() {
  Scene scene(6, 4, 7, 0.5e-6, 0.25e-6, 2e-6, 1e-6);
  for (std::size_t i = 0; i < scene.E.size(); ++i) {
    const auto x = static_cast<double>(i);
    scene.E[i] = {std::sin(x) + 1e-9, std::cos(2 * x)};
    scene.F[i] = x / 3;
    scene.N[i] = {1 + x / 100, x / 1000};
  }
  return scene;
}

// The numbers of a data set, or of its attribute if named.
std::vector<double> numbers(const std::string& file, const std::string& set,
                            std::vector<hsize_t>* shape = nullptr, const char* name = nullptr) {
  const hid_t id = H5Fopen(file.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
  const hid_t object = H5Oopen(id, set.c_str(), H5P_DEFAULT);
  const hid_t attribute = name != nullptr ? H5Aopen(object, name, H5P_DEFAULT) : -1;
  const hid_t space = name != nullptr ? H5Aget_space(attribute) : H5Dget_space(object);
  EXPECT_GE(space, 0) << file << " " << set;
  if (space < 0) return {};
  std::vector<double> values(static_cast<std::size_t>(H5Sget_simple_extent_npoints(space)));
  if (name != nullptr) {
    EXPECT_GE(H5Aread(attribute, H5T_NATIVE_DOUBLE, values.data()), 0);
    H5Aclose(attribute);
  } else {
    EXPECT_GE(H5Dread(object, H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data()), 0);
  }
  if (shape != nullptr) {
    shape->resize(static_cast<std::size_t>(H5Sget_simple_extent_ndims(space)));
    H5Sget_simple_extent_dims(space, shape->data(), nullptr);
  }
  H5Sclose(space);
  H5Oclose(object);
  H5Fclose(id);
  return values;
}

struct BoxCase {
  const char* name;
  void (*ask)(Monitor&);
  std::vector<int> x, y, z;  // samples that are saved
};

const BoxCase kBoxes[] = {
    {"whole", [](Monitor&) {}, {0, 1, 2, 3, 4, 5}, {0, 1, 2, 3}, {0, 1, 2, 3, 4, 5, 6}},
    {"every third slice",
     [](Monitor& m) { m.every = 3; },
     {0, 1, 2, 3, 4, 5},
     {0, 1, 2, 3},
     {0, 3, 6}},
    {"nearest to the bounds, which belong to the box",
     [](Monitor& m) { m.x1 = -0.6, m.x2 = 0.7, m.y2 = -0.3, m.z1 = 3.1, m.every = 2; },
     {2, 3, 4},
     {0, 1},
     {2, 4, 6}},
    {"the edges of the domain",
     [](Monitor& m) { m.x1 = -1.5, m.x2 = 1.5, m.y = 0.5, m.z = 14; },
     {0, 1, 2, 3, 4, 5},
     {3},
     {6}},
    {"a line", [](Monitor& m) { m.x = 0.2, m.y = 0; }, {3}, {2}, {0, 1, 2, 3, 4, 5, 6}},
};

TEST(FieldFile, HoldsTheChosenSamplesWithTheirPlaces) {
  Scene scene = varied_scene();
  const Grid grid = grid_of(scene);
  for (const auto& [name, ask, xs, ys, zs] : kBoxes) {
    SCOPED_TRACE(name);
    const TempDir directory;
    Monitor m = monitor(MonitorType::kField, directory, "f.vtkhdf");
    m.saves_intensity = m.saves_flux = m.saves_index = true;
    ask(m);
    observe(*monitor_of(scene, m), scene);
    std::vector<double> E, intensity, flux, index;
    for (const int k : zs)
      for (const int j : ys)
        for (const int i : xs) {
          const std::size_t s = scene.index(k, j, i);
          E.insert(E.end(), {scene.E[s].real(), scene.E[s].imag()});
          intensity.push_back(std::norm(scene.E[s]));
          flux.push_back(scene.F[s]);
          index.insert(index.end(), {scene.N[s].real(), scene.N[s].imag()});
        }
    const auto size = [](const std::vector<int>& samples) { return hsize_t{samples.size()}; };
    std::vector<hsize_t> shape;
    EXPECT_EQ(numbers(m.file, "VTKHDF/PointData/E", &shape), E);
    EXPECT_EQ(shape, (std::vector<hsize_t>{size(zs), size(ys), size(xs), 2}));
    EXPECT_EQ(numbers(m.file, "VTKHDF/PointData/intensity", &shape), intensity);
    EXPECT_EQ(shape, (std::vector<hsize_t>{size(zs), size(ys), size(xs)}));
    EXPECT_EQ(numbers(m.file, "VTKHDF/PointData/flux"), flux);
    EXPECT_EQ(numbers(m.file, "VTKHDF/PointData/index"), index);

    using Numbers = std::vector<double>;
    const auto image = [&](const char* attribute) {
      return numbers(m.file, "VTKHDF", nullptr, attribute);
    };
    const auto last = [](const std::vector<int>& samples) {
      return static_cast<double>(samples.size()) - 1;
    };
    EXPECT_EQ(image("Version"), (Numbers{1, 0}));
    EXPECT_EQ(image("WholeExtent"), (Numbers{0, last(xs), 0, last(ys), 0, last(zs)}));
    EXPECT_EQ(image("Origin"), (Numbers{grid.x(xs[0]), grid.y(ys[0]), grid.z(zs[0])}));
    EXPECT_EQ(image("Spacing"), (Numbers{0.5e-6, 0.25e-6, 2e-6 * m.every}));
    EXPECT_EQ(image("Direction"), (Numbers{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(numbers(m.file, "wavelength"), Numbers{6.2831853 / scene.k0});
    EXPECT_EQ(numbers(m.file, "slices_written"), Numbers{last(zs) + 1});
  }
}

TEST(FieldFile, GoesOnBehindAnySliceAndTellsHowFarItCame) {
  Scene scene = varied_scene();
  const TempDir directory;
  Monitor m = monitor(MonitorType::kField, directory, "f");
  m.is_single = true;
  m.saves_index = true;
  m.z1 = 3;
  expect_resuming(scene, m, directory);
  const auto E = numbers(directory.path("again").string(), "VTKHDF/PointData/E");
  for (std::size_t i = 0; i < E.size(); ++i) {
    const cpx& field = scene.E[scene.index(2, 0, 0) + i / 2];
    EXPECT_EQ(E[i], static_cast<float>(i % 2 == 0 ? field.real() : field.imag()));
  }
  // After a kill, written slices can be read and the rest is 0.
  const auto sink = monitor_of(scene, m);
  for (int k = 0; k < 4; ++k) sink->take(k, slice_of(scene, k));
  EXPECT_EQ(numbers(m.file, "slices_written"), std::vector{2.0});
  const auto part = numbers(m.file, "VTKHDF/PointData/E");
  ASSERT_EQ(part.size(), E.size());
  for (std::size_t i = 0; i < E.size(); ++i) EXPECT_EQ(part[i], i < 2 * 48 ? E[i] : 0.0);

  const SinkState state = sink->save();
  std::filesystem::resize_file(m.file, 100);
  EXPECT_ERROR(monitor_of(scene, m)->restore(state),
               "a.cfg: line 7: the run cannot go on with the file");
}

TEST(FieldFile, ThatDoesNotFitIsAnErrorBeforeTheRun) {
  const TempDir directory;
  Monitor m = monitor(MonitorType::kField, directory, "f.vtkhdf");
  Grid grid;
  grid.nx = grid.ny = grid.nz = 100000;
  grid.dx = grid.dy = grid.dz = 1e-6;
  EXPECT_ERROR(make_monitors({m}, grid, {}),
               "line 7: the file .* needs 1.6e\\+04 TB and its disk has .* left");
  // The disk has the space, but does not give it.
  Scene scene(64, 64, 20, 1e-6, 1e-6, 1e-6, 1e-6);
  const auto on_a_small_disk = [&] {
    const FileSizeLimit limit(100000);
    monitor_of(scene, m)->take(0, slice_of(scene, 0));
  };
  EXPECT_ERROR(on_a_small_disk(),
               "line 7: the file .* (cannot be created|of 1.31 MB cannot be had)");
}

// Another program reads the file: the shape of E, its first number, the spacing. Readers that are
// not installed are skipped.
void expect_read_by(const std::string& module, const std::string& script) {
  const TempDir directory;
  if (run_shell(directory, "/usr/bin/python3 -c 'import " + module + "'").status != 0)
    GTEST_SKIP() << "Debian: apt-get install python3-" << (module == "h5py" ? module : "vtk9");
  Scene scene = varied_scene();
  Monitor m = monitor(MonitorType::kField, directory, "f.vtkhdf");
  m.y1 = 0.0;  // rows 2 and 3; VTK 9.1 reads no box that is one sample thick
  m.saves_intensity = true;
  observe(*monitor_of(scene, m), scene);
  directory.write("read.py", script);
  const RunResult result = run_shell(directory, "/usr/bin/python3 read.py");
  EXPECT_EQ(result.status, 0) << result.err;
  std::ostringstream expected;
  expected << "6 2 7 2 " << scene.at(0, 2, 0).imag() << ' ' << std::norm(scene.at(6, 3, 5))
           << " 2e-06\n";
  EXPECT_EQ(result.out, expected.str());
}

TEST(FieldFile, IsReadByH5py) {
  expect_read_by("h5py", R"(
import h5py
f = h5py.File('f.vtkhdf', 'r')
vtk = f['VTKHDF']
assert vtk.attrs['Type'] == b'ImageData' and vtk.attrs['Type'].dtype.char == 'S'
assert f['configuration'][()] == b'[global]\nnx = 8\n[/global]\n'
assert f['options'][()] == b'-i a.cfg -p' and f['version'][()] == b'Version 0.10'
assert f['wavelength'].attrs['Unit'] == b'm' and b'field' in vtk['PointData/E'].attrs['Meaning']
E, I = vtk['PointData/E'], vtk['PointData/intensity']
print(E.shape[2], E.shape[1], E.shape[0], E.shape[3], '%g' % E[0, 0, 0, 1],
      '%g' % I[6, 1, 5], '%g' % vtk.attrs['Spacing'][2])
)");
}

TEST(FieldFile, IsReadByVtk) {
  expect_read_by("vtkmodules.vtkIOHDF", R"(
from vtkmodules.vtkIOHDF import vtkHDFReader
reader = vtkHDFReader()
reader.SetFileName('f.vtkhdf')
reader.Update()
image = reader.GetOutput()
E, I = (image.GetPointData().GetArray(name) for name in ('E', 'intensity'))
print(*image.GetDimensions(), E.GetNumberOfComponents(), '%g' % E.GetComponent(0, 1),
      '%g' % I.GetComponent(83, 0), '%g' % image.GetSpacing()[2])
)");
}

}  // namespace
