#include "data/dataset.h"

#include <hdf5.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <vector>

#include "diagnostics.h"

namespace data {
namespace {

// An identifier of the library and its close function.
class Handle {
 public:
  using Close = herr_t (*)(hid_t);
  Handle() = default;
  Handle(hid_t id, Close close) : id_(id), close_(close) {}
  Handle(Handle&& other) noexcept : id_(other.id_), close_(other.close_) { other.id_ = -1; }
  Handle& operator=(Handle&& other) noexcept {
    std::swap(id_, other.id_);
    std::swap(close_, other.close_);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (id_ >= 0) close_(id_);
  }
  operator hid_t() const { return id_; }  // NOLINT(google-explicit-constructor): as the library's

 private:
  hid_t id_ = -1;
  Close close_ = nullptr;
};

// Turns off the library's own messages: each call is checked and reported here.
void silence() {
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
}

// The group of fields in a monitor's file.
constexpr const char* kFields = "VTKHDF/PointData";

bool has_fields(hid_t file) {
  return H5Lexists(file, "VTKHDF", H5P_DEFAULT) > 0 && H5Lexists(file, kFields, H5P_DEFAULT) > 0;
}

// The data sets of the file, for a message about a missing one.
std::string names_in(hid_t file) {
  std::string names;
  const auto add = [](hid_t group, const char* name, const H5L_info_t*, void* all) -> herr_t {
    const Handle object(H5Oopen(group, name, H5P_DEFAULT), H5Oclose);
    if (object >= 0 && H5Iget_type(object) == H5I_DATASET) {
      auto& list = *static_cast<std::string*>(all);
      list += (list.empty() ? "/" : ", /") + std::string(name);
    }
    return 0;
  };
  H5Literate(file, H5_INDEX_NAME, H5_ITER_INC, nullptr, add, &names);
  if (has_fields(file)) {
    const Handle fields(H5Oopen(file, kFields, H5P_DEFAULT), H5Oclose);
    H5Literate(fields, H5_INDEX_NAME, H5_ITER_INC, nullptr, add, &names);
  }
  return names.empty() ? "it has none" : "it has " + names;
}

// The values of an attribute that has three.
std::optional<std::array<double, 3>> triple(hid_t object, const char* name) {
  if (object < 0 || H5Aexists(object, name) <= 0) return std::nullopt;
  const Handle attribute(H5Aopen(object, name, H5P_DEFAULT), H5Aclose);
  const Handle space(H5Aget_space(attribute), H5Sclose);
  std::array<double, 3> values{};
  if (H5Sget_simple_extent_npoints(space) != 3) return std::nullopt;
  if (H5Aread(attribute, H5T_NATIVE_DOUBLE, values.data()) < 0) return std::nullopt;
  return values;
}

bool is_float(hid_t type) {
  return H5Tget_class(type) == H5T_FLOAT && H5Tget_size(type) <= sizeof(double);
}

// A compound of two reals, r and i.
bool is_complex_compound(hid_t type) {
  if (H5Tget_class(type) != H5T_COMPOUND || H5Tget_nmembers(type) != 2) return false;
  for (const char* name : {"r", "i"}) {
    const int member = H5Tget_member_index(type, name);
    if (member < 0) return false;
    if (!is_float(Handle(H5Tget_member_type(type, static_cast<unsigned>(member)), H5Tclose)))
      return false;
  }
  return true;
}

}  // namespace

struct Dataset::Inside {
  std::string where, name;
  Handle file, set, memory_type;
  std::size_t rank = 0;  // of the file's array, the last axis of 2 included
  bool has_pairs = false;
  bool is_complex = false;
  hsize_t nz = 1, ny = 0, nx = 0;
  std::optional<Sampling> sampling;
  hsize_t written = std::numeric_limits<hsize_t>::max();  // slices that the run wrote

  [[noreturn]] void fail(const std::string& what) const {
    diagnostics::fail(where + ": " + name + " " + what);
  }
  void open(const std::string& path, const std::string& dataset);
  void find_written();
  void find_shape(Layout layout);
  void find_sampling();
  void read(hsize_t first, hsize_t slices, double* values) const;
};

void Dataset::Inside::open(const std::string& path, const std::string& dataset) {
  std::error_code none;
  if (!std::filesystem::exists(path, none)) fail("cannot be read: there is no such file");
  // A pipe would wait for a writer forever.
  if (!std::filesystem::is_regular_file(path, none)) fail("cannot be read: that is no file");
  const Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose);
#if H5_VERSION_GE(1, 10, 7)
  H5Pset_file_locking(access, true, true);  // some cluster file systems have no locks
#endif
  file = Handle(H5Fopen(path.c_str(), H5F_ACC_RDONLY, access), H5Fclose);
  if (file < 0) fail("cannot be read: that is not an HDF5 file, or you may not read it");
  set = Handle(H5Dopen2(file, dataset.c_str(), H5P_DEFAULT), H5Dclose);
  if (set < 0 && has_fields(file)) {
    const std::string inside = std::string(kFields) + "/" + dataset;  // "//" counts as "/"
    set = Handle(H5Dopen2(file, inside.c_str(), H5P_DEFAULT), H5Dclose);
    if (set >= 0) find_written();
  }
  if (set < 0) fail("is no data set of the file; " + names_in(file) + "; name it by dataset");
}

// A monitor's file has the number of slices that its run wrote.
void Dataset::Inside::find_written() {
  const Handle count(H5Dopen2(file, "slices_written", H5P_DEFAULT), H5Dclose);
  long long slices = 0;
  if (count >= 0 && H5Dread(count, H5T_NATIVE_LLONG, H5S_ALL, H5S_ALL, H5P_DEFAULT, &slices) >= 0)
    written = static_cast<hsize_t>(std::max(slices, 0LL));
}

void Dataset::Inside::find_shape(Layout layout) {
  const std::string expected =
      layout == Layout::kField
          ? "; a field is [ny][nx][2] or [nz][ny][nx][2], float or double, or a "
            "compound of two such reals r and i in [ny][nx] or [nz][ny][nx]"
          : "; a volume is [nz][ny][nx] or, with a second number for each "
            "sample, [nz][ny][nx][2], float or double";
  const Handle type(H5Dget_type(set), H5Tclose);
  const bool is_compound = is_complex_compound(type);
  if (!is_compound && !is_float(type)) fail("holds no floating-point numbers" + expected);
  const Handle space(H5Dget_space(set), H5Sclose);
  const int axes = H5Sget_simple_extent_ndims(space);
  std::vector<hsize_t> size(static_cast<std::size_t>(std::max(axes, 0)));
  if (axes > 0) H5Sget_simple_extent_dims(space, size.data(), nullptr);
  std::string shape;
  for (const hsize_t n : size) shape += '[' + std::to_string(n) + ']';

  rank = size.size();
  has_pairs = !is_compound && rank > 0 && size.back() == 2 &&
              (rank == 4 || (rank == 3 && layout == Layout::kField));
  is_complex = is_compound || has_pairs;
  const std::size_t axes_of_samples = rank - (has_pairs ? 1 : 0);
  const bool fits = axes_of_samples == 3 || (axes_of_samples == 2 && layout == Layout::kField);
  if (!fits || (layout == Layout::kField && !is_complex))
    fail("has the shape " + (shape.empty() ? "of a single value" : shape) + expected);
  nx = size[axes_of_samples - 1];
  ny = size[axes_of_samples - 2];
  nz = axes_of_samples == 3 ? size[0] : 1;
  constexpr hsize_t kMost = std::numeric_limits<int>::max();
  constexpr hsize_t kMostOfSlice = hsize_t{1} << 28;  // 4 GiB of complex numbers
  if (nx == 0 || ny == 0 || nz == 0) fail("is empty: its shape is " + shape);
  if (nx > kMost || ny > kMost || nz > kMost || nx * ny > kMostOfSlice)
    fail("is too large: its shape is " + shape + ", and a slice may have 2^28 samples");

  if (is_compound) {
    memory_type = Handle(H5Tcreate(H5T_COMPOUND, 2 * sizeof(double)), H5Tclose);
    H5Tinsert(memory_type, "r", 0, H5T_NATIVE_DOUBLE);
    H5Tinsert(memory_type, "i", sizeof(double), H5T_NATIVE_DOUBLE);
  } else {
    memory_type = Handle(H5Tcopy(H5T_NATIVE_DOUBLE), H5Tclose);
  }
}

void Dataset::Inside::find_sampling() {
  Handle holder;
  std::optional<std::array<double, 3>> spacing = triple(set, "Spacing");
  std::optional<std::array<double, 3>> origin = triple(set, "Origin");
  if (!spacing && H5Lexists(file, "VTKHDF", H5P_DEFAULT) > 0) {
    holder = Handle(H5Oopen(file, "VTKHDF", H5P_DEFAULT), H5Oclose);
    spacing = triple(holder, "Spacing");
    origin = triple(holder, "Origin");
  }
  if (!spacing) return;
  for (const double step : *spacing)
    if (!(step > 0.0 && std::isfinite(step)))
      fail("has an attribute Spacing of " + std::to_string(step) + "; it must be above 0");
  const auto middle_x = nx / 2;
  const auto middle_y = ny / 2;
  if (!origin)
    origin = {-static_cast<double>(middle_x) * (*spacing)[0],
              -static_cast<double>(middle_y) * (*spacing)[1], 0.0};
  for (const double place : *origin)
    if (!std::isfinite(place)) fail("has an attribute Origin that is not finite");
  sampling = Sampling{*spacing, *origin};
}

void Dataset::Inside::read(hsize_t first, hsize_t slices, double* values) const {
  if (first + slices > written)
    fail("has no slice " + std::to_string(first + slices - 1) +
         ": the run that wrote the file was interrupted behind " + std::to_string(written));
  // The selection has the file's axes: [ny][nx] has no axis of slices; pairs add a last one.
  std::vector<hsize_t> start = {first, 0, 0, 0};
  std::vector<hsize_t> count = {slices, ny, nx, 2};
  const std::size_t missing = rank - (has_pairs ? 1 : 0) == 3 ? 0 : 1;
  const auto* begin = start.data() + missing;
  const auto* extent = count.data() + missing;
  const Handle space(H5Dget_space(set), H5Sclose);
  const Handle memory(H5Screate_simple(static_cast<int>(rank), extent, nullptr), H5Sclose);
  if (H5Sselect_hyperslab(space, H5S_SELECT_SET, begin, nullptr, extent, nullptr) < 0 ||
      H5Dread(set, memory_type, memory, space, H5P_DEFAULT, values) < 0)
    fail("cannot be read: the file is damaged or cut short, or packed in a way that is unknown");
  const hsize_t numbers = slices * ny * nx * (is_complex ? 2 : 1);
  for (hsize_t i = 0; i < numbers; ++i) {
    if (std::isfinite(values[i])) continue;
    const hsize_t sample = i / (is_complex ? 2 : 1);
    fail("holds a value that is not finite, at slice " +
         std::to_string(first + sample / (ny * nx)) + ", row " + std::to_string(sample / nx % ny) +
         ", column " + std::to_string(sample % nx));
  }
}

Dataset::Dataset(const std::string& file, const std::string& dataset, Layout layout,
                 const std::string& where)
    : inside_(std::make_unique<Inside>()) {
  silence();
  inside_->where = where;
  inside_->name = file + ":" + dataset;
  inside_->open(file, dataset);
  inside_->find_shape(layout);
  inside_->find_sampling();
}
Dataset::~Dataset() = default;
Dataset::Dataset(Dataset&&) noexcept = default;

int Dataset::slices() const {
  return static_cast<int>(inside_->nz);
}
int Dataset::rows() const {
  return static_cast<int>(inside_->ny);
}
int Dataset::columns() const {
  return static_cast<int>(inside_->nx);
}
bool Dataset::is_complex() const {
  return inside_->is_complex;
}
const std::optional<Sampling>& Dataset::sampling() const {
  return inside_->sampling;
}
const std::string& Dataset::name() const {
  return inside_->name;
}

void Dataset::read(int first, int count, double* values) const {
  inside_->read(static_cast<hsize_t>(first), static_cast<hsize_t>(count), values);
}

}  // namespace data
