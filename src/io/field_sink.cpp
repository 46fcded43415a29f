// Files of the field, written slice by slice.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "diagnostics.h"
#include "io/box.h"
#include "io/field_file.h"
#include "io/io.h"
#include "io/monitors.h"
#include "io/output_file.h"
#include "io/units.h"
#include "wpm/byte_stream.h"

std::int64_t FieldFile::slice_bytes(const FieldArray& array) const {
  return static_cast<std::int64_t>(bytes_per_number) * array.components * sizes[0] * sizes[1];
}

std::int64_t FieldFile::bytes() const {
  std::int64_t sum = 0;
  for (const FieldArray& array : arrays) sum += slice_bytes(array) * sizes[2];
  return sum;
}

namespace {

double real_part(const Slice& s, std::size_t i) {
  return s.E[i].real();
}
double imaginary_part(const Slice& s, std::size_t i) {
  return s.E[i].imag();
}
double intensity(const Slice& s, std::size_t i) {
  return std::norm(s.E[i]);
}
double flux(const Slice& s, std::size_t i) {
  return s.F[i];
}
double refractive_index(const Slice& s, std::size_t i) {
  return s.N[i].real();
}
double extinction(const Slice& s, std::size_t i) {
  return s.N[i].imag();
}

// Appends the parts of each of count samples from the first on.
template <typename Number, double (*... parts)(const Slice&, std::size_t)>
void append(const Slice& slice, std::size_t first, std::size_t count, std::vector<Number>& to) {
  const std::size_t size = to.size();
  to.resize(size + count * sizeof...(parts));
  Number* next = to.data() + size;
  for (std::size_t i = first; i < first + count; ++i)
    ((*next++ = static_cast<Number>(parts(slice, i))), ...);
}

struct Saved {
  FieldArray array;
  bool Monitor::*is_asked;
  void (*append_double)(const Slice&, std::size_t, std::size_t, std::vector<double>&);
  void (*append_single)(const Slice&, std::size_t, std::size_t, std::vector<float>&);
};

template <double (*... parts)(const Slice&, std::size_t)>
Saved saved(const char* name, const char* unit, const char* meaning, bool Monitor::*is_asked) {
  return {{name, unit, meaning, int{sizeof...(parts)}},
          is_asked,
          append<double, parts...>,
          append<float, parts...>};
}

const Saved kSaved[] = {
    saved<real_part, imaginary_part>("E", "amplitude of the wave",
                                     "complex field: real and imaginary part", &Monitor::saves_E),
    saved<intensity>("intensity", "amplitude of the wave squared", "squared modulus of the field",
                     &Monitor::saves_intensity),
    saved<flux>("flux", "amplitude of the wave squared * rad/m",
                "energy flux along z of each sample, not normalised", &Monitor::saves_flux),
    saved<refractive_index, extinction>("index", "1", "refractive index and extinction",
                                        &Monitor::saves_index),
};

// A file of numbers at known places. What cannot be written is lost: an error, said once.
class Places {
 public:
  explicit Places(std::string name) : name_(std::move(name)) {}
  ~Places() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Places(const Places&) = delete;
  Places& operator=(const Places&) = delete;

  bool open_existing() { return (descriptor_ = open(name_.c_str(), O_WRONLY | O_CLOEXEC)) >= 0; }

  // Has the disk set aside what the file will hold; false if it cannot.
  bool reserve() {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) return false;
    // Where that is unknown to the file system, its free space has been looked at.
    return fallocate(descriptor_, 0, 0, status.st_size) == 0 || errno == EOPNOTSUPP ||
           errno == EINVAL;
  }

  void write(const void* bytes, std::int64_t count, std::int64_t place) {
    const char* next = static_cast<const char*>(bytes);
    while (descriptor_ >= 0 && count > 0) {
      const ssize_t written = pwrite(descriptor_, next, static_cast<std::size_t>(count), place);
      if (written < 0) {
        if (errno != EINTR) fail();
        continue;
      }
      next += written;
      place += written;
      count -= written;
    }
  }
  void save() {
    if (descriptor_ >= 0 && fdatasync(descriptor_) != 0) fail();
  }
  void finish() {
    if (descriptor_ >= 0 && close(std::exchange(descriptor_, -1)) != 0) fail();
  }
  [[nodiscard]] bool is_lost() const { return descriptor_ < 0; }

 private:
  void fail() {
    diagnostics::error(name_ + ": lost, it is not fully written: " + std::strerror(errno));
    if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
  }

  std::string name_;
  int descriptor_ = -1;
};

class FieldSink : public Sink {
 public:
  FieldSink(FieldFile file, std::vector<const Saved*> saved, const Box& box, const Grid& grid,
            std::string where)
      : file_(std::move(file)),
        saved_(std::move(saved)),
        box_(box),
        columns_(static_cast<std::size_t>(grid.nx)),
        where_(std::move(where)),
        disk_(file_.name) {}

  // The first slice creates the file, so that what cannot be had is said before any step.
  void take(int k, const Slice& slice) override {
    if (!is_open_) create();
    if (disk_.is_lost() || !box_.has_slice(k)) return;
    const std::int64_t number = (k - box_.z.first) / box_.every;
    for (std::size_t a = 0; a < saved_.size(); ++a) {
      const std::int64_t bytes = file_.slice_bytes(file_.arrays[a]);
      const void* const numbers =
          file_.bytes_per_number == 4  ? gather(saved_[a]->append_single, slice, single_)
          : is_whole_field(*saved_[a]) ? static_cast<const void*>(slice.E)
                                       : gather(saved_[a]->append_double, slice, double_);
      disk_.write(numbers, bytes, places_.arrays[a] + number * bytes);
    }
    const std::int64_t written = number + 1;
    disk_.write(&written, sizeof written, places_.slices_written);
  }

  [[nodiscard]] SliceRequest required(int k) const override {
    if (!box_.has_slice(k)) return {};
    const auto has = [this](const bool Monitor::*array) {
      return std::any_of(saved_.begin(), saved_.end(),
                         [array](const Saved* saved) { return saved->is_asked == array; });
    };
    return {has(&Monitor::saves_E) || has(&Monitor::saves_intensity),
            has(&Monitor::saves_flux),
            has(&Monitor::saves_index),
            false,
            box_.y.first,
            box_.y.first + box_.y.count,
            box_.x.first,
            box_.x.first + box_.x.count};
  }
  void finish() override { disk_.finish(); }

  SinkState save() override {
    if (!is_open_) create();
    disk_.save();
    ByteWriter state;
    state.put(disk_.is_lost());
    state.put(places_.slices_written);
    state.put_all(places_.arrays);
    return state.bytes();
  }

  // What the file has beyond the state is written again in its place.
  void restore(const SinkState& state) override {
    ByteReader from(state);
    is_open_ = true;
    const bool is_lost = from.take<bool>();
    places_.slices_written = from.take<std::int64_t>();
    std::int64_t end = 0;
    for (const FieldArray& array : file_.arrays) {
      places_.arrays.push_back(from.take<std::int64_t>());
      end = std::max(end, places_.arrays.back() + file_.slice_bytes(array) * file_.sizes[2]);
    }
    if (is_lost) {
      diagnostics::error(file_.name + ": lost, it was not fully written before the checkpoint");
      return;
    }
    std::error_code none;
    const auto size = std::filesystem::file_size(file_.name, none);
    if (none || size < static_cast<std::uintmax_t>(end) || !disk_.open_existing())
      diagnostics::fail(where_ + ": the run cannot go on with the file " + file_.name +
                        ", which is gone or changed; remove the checkpoint to begin anew");
  }

 private:
  void create() {
    places_ = lay_out(file_, where_);
    is_open_ = true;
    if (disk_.open_existing() && disk_.reserve()) return;
    const std::string reason = std::strerror(errno);
    std::error_code none;
    std::filesystem::resize_file(file_.name, 0, none);
    diagnostics::fail(where_ + ": the file " + file_.name + " of " +
                      bytes_in_words(static_cast<double>(file_.bytes())) + " cannot be had: " +
                      reason + "; choose a smaller box, a larger every or precision = single");
  }

  [[nodiscard]] bool is_whole_field(const Saved& saved) const {
    return saved.is_asked == &Monitor::saves_E && box_.x.first == 0 && box_.y.first == 0 &&
           static_cast<std::size_t>(box_.x.count) == columns_;
  }

  template <typename Append, typename Number>
  const void* gather(Append append, const Slice& slice, std::vector<Number>& numbers) const {
    numbers.clear();
    for (int j = box_.y.first; j < box_.y.first + box_.y.count; ++j)
      append(slice, static_cast<std::size_t>(j) * columns_ + static_cast<std::size_t>(box_.x.first),
             static_cast<std::size_t>(box_.x.count), numbers);
    return numbers.data();
  }

  FieldFile file_;
  std::vector<const Saved*> saved_;
  Box box_;
  std::size_t columns_;  // of a slice
  std::string where_;
  bool is_open_ = false;
  FieldPlaces places_;
  Places disk_;
  std::vector<float> single_;
  std::vector<double> double_;
};

void require_space(const FieldFile& file, const std::string& where) {
  std::error_code none;
  const auto space = std::filesystem::space(folder_of(file.name), none);
  if (none || space.available >= static_cast<std::uintmax_t>(file.bytes())) return;
  diagnostics::fail(where + ": the file " + file.name + " needs " +
                    bytes_in_words(static_cast<double>(file.bytes())) + " and its disk has " +
                    bytes_in_words(static_cast<double>(space.available)) +
                    " left; choose a smaller box, a larger every or precision = single");
}

}  // namespace

std::unique_ptr<Sink> make_field_sink(const Monitor& monitor, const Grid& grid,
                                      const RunContext& run, const std::string& where) {
  if (!writes_field_files())
    diagnostics::fail(where +
                      ": type = field needs HDF5, which this program was built without; "
                      "install it (Debian: libhdf5-dev) and build with -DZERITH_HDF5=on");
  const Box box = box_of(monitor, grid, where);
  FieldFile file;
  file.name = monitor.file;
  file.sizes = {box.x.count, box.y.count, box.saved_slices()};
  file.origin = {grid.x(box.x.first), grid.y(box.y.first), grid.z(box.z.first)};
  file.spacing = {grid.dx, grid.dy, grid.dz * box.every};
  file.bytes_per_number = monitor.is_single ? sizeof(float) : sizeof(double);
  file.texts = {{"configuration", run.text}, {"options", run.options}, {"version", run.version}};
  file.wavelength = run.lambda;
  std::vector<const Saved*> saved;
  for (const Saved& candidate : kSaved)
    if (monitor.*candidate.is_asked) {
      saved.push_back(&candidate);
      file.arrays.push_back(candidate.array);
    }
  require_space(file, where);
  return std::make_unique<FieldSink>(std::move(file), std::move(saved), box, grid, where);
}
