#include "data/dataset.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/process.h"
#if ZERITH_HAS_HDF5
#include "data/hdf5_writer.h"
#include "support/errors.h"
#endif

namespace {

using data::Dataset;
using data::Layout;

TEST(Dataset, NamesAreRelativeToTheConfiguration) {
  EXPECT_EQ(data::beside("a.cfg", "n.h5"), "n.h5");
  EXPECT_EQ(data::beside("runs/a.cfg", "in/n.h5"), "runs/in/n.h5");
  EXPECT_EQ(data::beside("runs/a.cfg", "/in/n.h5"), "/in/n.h5");
  EXPECT_EQ(data::place("a.cfg", 12), "a.cfg: line 12");
  EXPECT_EQ(data::place("a.cfg", 0), "a.cfg");
}

#if ZERITH_HAS_HDF5

std::vector<double> all_of(const Dataset& set) {
  const auto numbers = static_cast<std::size_t>(set.rows() * set.columns()) *
                       static_cast<std::size_t>(set.slices() * (set.is_complex() ? 2 : 1));
  std::vector<double> values(numbers);
  set.read(0, set.slices(), values.data());
  return values;
}

// A file of 2 x 3 x 4 samples in every form; sample s is s + 0.5 - s i.
class Forms : public testing::Test {
 protected:
  Forms() {
    for (int s = 0; s < 24; ++s) {
      real.push_back(s + 0.5);
      pairs.insert(pairs.end(), {s + 0.5, -1.0 * s});
      complex.emplace_back(s + 0.5, -1.0 * s);
    }
    Hdf5Writer file(path);
    file.write("real", {2, 3, 4}, real.data());
    file.write("floats", {2, 3, 4}, real.data(), H5T_IEEE_F32BE);
    file.write("pairs", {2, 3, 4, 2}, pairs.data());
    file.write("slice", {3, 4, 2}, pairs.data());
    file.write_compound("compound", {2, 3, 4}, complex.data());
    file.write_compound("single", {3, 4}, complex.data(), true);
    file.write("thin", {2, 3, 2}, real.data());
  }
  TempDir folder;
  std::string path = folder.path("a.h5").string();
  std::vector<double> real, pairs;
  std::vector<std::complex<double>> complex;
};

TEST_F(Forms, AreAllSeenAsSlices) {
  struct Form {
    const char* name;
    Layout layout;
    int nz, nx;
    bool is_complex;
  };
  for (const Form& form :
       {Form{"/real", Layout::kVolume, 2, 4, false}, Form{"/floats", Layout::kVolume, 2, 4, false},
        Form{"/pairs", Layout::kVolume, 2, 4, true}, Form{"/pairs", Layout::kField, 2, 4, true},
        Form{"/slice", Layout::kField, 1, 4, true}, Form{"/compound", Layout::kField, 2, 4, true},
        Form{"/compound", Layout::kVolume, 2, 4, true}, Form{"single", Layout::kField, 1, 4, true},
        // Three axes that end in 2: columns of a volume, parts of a field.
        Form{"thin", Layout::kVolume, 2, 2, false}, Form{"thin", Layout::kField, 1, 3, true}}) {
    const Dataset set(path, form.name, form.layout, "a.cfg: line 3");
    EXPECT_EQ(std::tuple(set.slices(), set.columns(), set.is_complex()),
              std::tuple(form.nz, form.nx, form.is_complex))
        << form.name;
    const std::vector<double>& expected =
        form.is_complex && std::string(form.name) != "thin" ? pairs : real;
    const std::size_t plane =
        static_cast<std::size_t>(set.rows() * set.columns()) * (form.is_complex ? 2 : 1);
    const int last = form.nz - 1;
    std::vector<double> values(plane);
    set.read(last, 1, values.data());
    for (std::size_t i = 0; i < plane; ++i)
      EXPECT_EQ(values[i], expected[static_cast<std::size_t>(last) * plane + i]) << form.name;
    const std::vector<double> all = all_of(set);
    EXPECT_EQ(all, std::vector(expected.begin(), expected.begin() + std::ssize(all))) << form.name;
    EXPECT_FALSE(set.sampling().has_value());
  }
}

TEST_F(Forms, CarryTheirSamplingAsAttributes) {
  const std::string sampled = folder.path("b.h5").string();
  {
    Hdf5Writer file(sampled);
    file.write("here", {3, 4, 2}, pairs.data());
    file.write("there", {3, 4, 2}, pairs.data());
    file.attribute("VTKHDF", "Spacing", {1e-7, 2e-7, 3e-7});
    file.attribute("VTKHDF", "Origin", {1e-6, -2e-6, 5e-6});
    file.attribute("here", "Spacing", {4e-7, 5e-7, 6e-7});
  }
  const auto sampling = [&](const char* name) {
    return Dataset(sampled, name, Layout::kField, "").sampling().value();
  };
  EXPECT_EQ(sampling("there").spacing, (std::array{1e-7, 2e-7, 3e-7}));
  EXPECT_EQ(sampling("there").origin, (std::array{1e-6, -2e-6, 5e-6}));
  EXPECT_EQ(sampling("here").spacing, (std::array{4e-7, 5e-7, 6e-7}));
  EXPECT_EQ(sampling("here").origin, (std::array{-2 * 4e-7, -1 * 5e-7, 0.0}));  // centred
}

// A monitor's file has its fields in a group, and the number of slices written.
TEST_F(Forms, FieldsOfAMonitorAreFoundByTheirNames) {
  const std::string saved = folder.path("b.h5").string();
  {
    Hdf5Writer file(saved);
    file.attribute("VTKHDF", "Spacing", {1e-7, 2e-7, 3e-7});
    file.attribute("VTKHDF/PointData", "Nothing", {0});
    file.write("VTKHDF/PointData/E", {2, 3, 4, 2}, pairs.data());
    const double one = 1;
    file.write("slices_written", {1}, &one, H5T_STD_I64LE);
  }
  const Dataset set(saved, "/E", Layout::kField, "a.cfg: line 3");
  std::vector<double> values(24);
  set.read(0, 1, values.data());
  EXPECT_EQ(values[22], 11.5);
  EXPECT_ERROR(set.read(1, 1, values.data()),
               "line 3: .* has no slice 1: the run that wrote the file was interrupted behind 1");
  EXPECT_ERROR(Dataset(saved, "/n", Layout::kField, ""), "/E");
}

TEST_F(Forms, WhatDoesNotServeIsAnErrorThatNamesThePlace) {
  real[13] = std::nan("");
  pairs[7] = std::numeric_limits<double>::infinity();
  const std::string bad = folder.path("bad.h5").string();
  {
    Hdf5Writer file(bad);
    file.write("whole", {2, 3, 4}, real.data(), H5T_STD_I32LE);
    file.write("line", {24}, real.data());
    file.write("flat", {6, 4}, real.data());
    file.write("nan", {2, 3, 4}, real.data());
    file.write("inf", {3, 4, 2}, pairs.data());
    file.write("empty", {3, 0, 2}, nullptr);
    file.write("large", {20000, 20000, 2}, nullptr);
    file.write("still", {3, 4, 2}, pairs.data());
    file.attribute("still", "Spacing", {1e-7, 0.0, 1e-7});
  }
  folder.write("text.h5", "no HDF5");
  folder.write("half.h5", folder.read("bad.h5").substr(0, folder.read("bad.h5").size() / 2));
  struct Bad {
    const char* file;
    const char* name;
    Layout layout;
    const char* message;
  };
  for (const Bad& b :
       {Bad{"none.h5", "/E", Layout::kField, "there is no such file"},
        Bad{"", "/E", Layout::kField, "that is no file"},
        Bad{"text.h5", "/E", Layout::kField, "not an HDF5 file"},
        Bad{"half.h5", "/E", Layout::kField, "not an HDF5 file"},
        Bad{"a.h5", "/E", Layout::kField, "it has /compound, /floats"},
        Bad{"bad.h5", "whole", Layout::kVolume, "no floating-point numbers"},
        Bad{"bad.h5", "line", Layout::kVolume, "has the shape .24.; a volume is"},
        Bad{"bad.h5", "flat", Layout::kField, "has the shape .6..4.; a field is"},
        Bad{"a.h5", "real", Layout::kField, "has the shape .2..3..4."},
        Bad{"bad.h5", "empty", Layout::kField, "is empty"},
        Bad{"bad.h5", "large", Layout::kField, "is too large"},
        Bad{"bad.h5", "still", Layout::kField, "Spacing of 0"},
        Bad{"bad.h5", "nan", Layout::kVolume, "not finite, at slice 1, row 0, column 1"},
        Bad{"bad.h5", "inf", Layout::kField, "not finite, at slice 0, row 0, column 3"}}) {
    EXPECT_ERROR(all_of({folder.path(b.file).string(), b.name, b.layout, "a.cfg: line 3"}),
                 std::string("a.cfg: line 3: .*") + b.message)
        << b.name;
  }
}

#else

TEST(Dataset, NeedsAProgramBuiltWithHdf5) {
  EXPECT_ERROR(Dataset("a.h5", "/E", Layout::kField, "a.cfg: line 3"),
               "a.cfg: line 3: .*ZERITH_HDF5=on");
}

#endif

}  // namespace
