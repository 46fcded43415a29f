#include "io/field_file.h"

#include <hdf5.h>

#include "diagnostics.h"
#include "io/io.h"

bool writes_field_files() {
  return true;
}

namespace {

// A file that the disk does not take stays half open in the library, whose handler at the end of
// the process would fail over it. Nothing of ours is left to that handler. To be said before any
// other call.
const bool kLeavesNothingToTheEnd = H5dont_atexit() >= 0;

// An identifier of the library and what closes it.
class Handle {
 public:
  Handle(hid_t id, herr_t (*close)(hid_t)) : id_(id), close_(close) {}
  ~Handle() {
    if (id_ >= 0) close_(id_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  operator hid_t() const { return id_; }  // NOLINT(google-explicit-constructor): as the library's

 private:
  hid_t id_;
  herr_t (*close_)(hid_t);
};

// One file in the making. A call that fails makes all later ones fail: the last tells.
class Layout {
 public:
  explicit Layout(const FieldFile& file)
      : access_(H5Pcreate(H5P_FILE_ACCESS), H5Pclose),
        creation_(H5Pcreate(H5P_DATASET_CREATE), H5Pclose),
        file_(create(file.name), H5Fclose),
        is_good_(file_ >= 0) {
    // In one piece, there from the start, and without times: equal runs leave equal bytes.
    require(H5Pset_layout(creation_, H5D_CONTIGUOUS));
    require(H5Pset_alloc_time(creation_, H5D_ALLOC_TIME_EARLY));
    require(H5Pset_fill_time(creation_, H5D_FILL_TIME_NEVER));
    require(H5Pset_obj_track_times(creation_, false));
  }

  [[nodiscard]] hid_t file() const { return file_; }

  hid_t group(hid_t parent, const char* name) {
    return require(H5Gcreate2(parent, name, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT));
  }

  void numbers(hid_t object, const char* name, hid_t type, const void* values, hsize_t count) {
    const Handle space(H5Screate_simple(1, &count, nullptr), H5Sclose);
    attribute(object, name, type, space, values);
  }

  void text(hid_t object, const char* name, const std::string& value) {
    const Handle space(H5Screate(H5S_SCALAR), H5Sclose);
    const Handle type = string_type(value, H5T_CSET_ASCII);
    attribute(object, name, type, space, value.c_str());
  }

  // A data set that holds one value; where that lies.
  haddr_t scalar(const char* name, hid_t type, const void* value, const char* unit,
                 const char* meaning) {
    const Handle space(H5Screate(H5S_SCALAR), H5Sclose);
    return array(file_, name, type, space, value, unit, meaning);
  }
  void scalar_text(const std::string& name, const std::string& value) {
    const Handle space(H5Screate(H5S_SCALAR), H5Sclose);
    const Handle type = string_type(value, H5T_CSET_UTF8);
    array(file_, name.c_str(), type, space, value.c_str(), nullptr, nullptr);
  }

  // values: null for numbers that are to follow.
  haddr_t array(hid_t parent, const char* name, hid_t type, hid_t space, const void* values,
                const char* unit, const char* meaning) {
    const Handle set(H5Dcreate2(parent, name, type, space, H5P_DEFAULT, creation_, H5P_DEFAULT),
                     H5Dclose);
    require(set);
    if (unit != nullptr) text(set, "Unit", unit);
    if (meaning != nullptr) text(set, "Meaning", meaning);
    if (values != nullptr) require(H5Dwrite(set, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, values));
    const haddr_t place = is_good_ ? H5Dget_offset(set) : 0;
    is_good_ = is_good_ && place != HADDR_UNDEF;
    return place;
  }

  // All is on its way to the disk; false if anything was not possible.
  bool finish() {
    require(H5Fflush(file_, H5F_SCOPE_GLOBAL));
    return is_good_;
  }

 private:
  hid_t create(const std::string& name) {
    (void)kLeavesNothingToTheEnd;
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);  // each call is checked, and told of in our words
#if H5_VERSION_GE(1, 10, 7)
    H5Pset_file_locking(access_, true, true);  // some disks of clusters have no locks
#endif
    return H5Fcreate(name.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, access_);
  }

  // Both kinds of the library's results are negative for a failure.
  hid_t require(hid_t result) {
    if (result < 0) is_good_ = false;
    return result;
  }

  static Handle string_type(const std::string& value, H5T_cset_t set) {
    const hid_t type = H5Tcopy(H5T_C_S1);
    H5Tset_size(type, value.empty() ? 1 : value.size());
    H5Tset_strpad(type, H5T_STR_NULLPAD);
    H5Tset_cset(type, set);
    return {type, H5Tclose};
  }

  void attribute(hid_t object, const char* name, hid_t type, hid_t space, const void* values) {
    const Handle made(H5Acreate2(object, name, type, space, H5P_DEFAULT, H5P_DEFAULT), H5Aclose);
    require(H5Awrite(made, type, values));
  }

  Handle access_, creation_, file_;
  bool is_good_;
};

void describe_image(Layout& layout, hid_t vtk, const FieldFile& file) {
  const std::int64_t version[] = {1, 0};
  const std::int64_t extent[] = {0, file.sizes[0] - 1, 0, file.sizes[1] - 1, 0, file.sizes[2] - 1};
  const double direction[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  layout.numbers(vtk, "Version", H5T_NATIVE_INT64, version, 2);
  layout.text(vtk, "Type", "ImageData");
  layout.numbers(vtk, "WholeExtent", H5T_NATIVE_INT64, extent, 6);
  layout.numbers(vtk, "Origin", H5T_NATIVE_DOUBLE, file.origin.data(), 3);
  layout.numbers(vtk, "Spacing", H5T_NATIVE_DOUBLE, file.spacing.data(), 3);
  layout.numbers(vtk, "Direction", H5T_NATIVE_DOUBLE, direction, 9);
  layout.text(vtk, "LengthUnit", "m");
}

haddr_t describe_array(Layout& layout, hid_t points, const FieldFile& file,
                       const FieldArray& array) {
  const auto size = [&](std::size_t axis) { return static_cast<hsize_t>(file.sizes[axis]); };
  const hsize_t sizes[] = {size(2), size(1), size(0), 2};
  const Handle space(H5Screate_simple(array.components == 2 ? 4 : 3, sizes, nullptr), H5Sclose);
  const hid_t type = file.bytes_per_number == 4 ? H5T_NATIVE_FLOAT : H5T_NATIVE_DOUBLE;
  return layout.array(points, array.name.c_str(), type, space, nullptr, array.unit.c_str(),
                      array.meaning.c_str());
}

}  // namespace

FieldPlaces lay_out(const FieldFile& file, const std::string& where) {
  FieldPlaces places;
  Layout layout(file);
  const Handle vtk(layout.group(layout.file(), "VTKHDF"), H5Gclose);
  describe_image(layout, vtk, file);
  for (const auto& [name, text] : file.texts) layout.scalar_text(name, text);
  layout.scalar("wavelength", H5T_NATIVE_DOUBLE, &file.wavelength, "m", "vacuum wavelength");
  const std::int64_t none = 0;
  places.slices_written = static_cast<std::int64_t>(
      layout.scalar("slices_written", H5T_NATIVE_INT64, &none, "1",
                    "slices that hold the field; fewer than there are: the run was interrupted"));
  const Handle points(layout.group(vtk, "PointData"), H5Gclose);
  for (const FieldArray& array : file.arrays)
    places.arrays.push_back(static_cast<std::int64_t>(describe_array(layout, points, file, array)));
  if (!layout.finish())
    diagnostics::fail(where + ": the file " + file.name +
                      " cannot be created; is its folder there, may you write to it, and is it "
                      "open elsewhere?");
  return places;
}
