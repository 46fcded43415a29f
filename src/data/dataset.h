// Data sets of HDF5 files, as input: fields and volumes of indices.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace data {

// "FILE.cfg: line 12", where an error lies; the file alone for line 0.
std::string place(const std::string& configuration, int line);

// The path of an input file: names are relative to the folder of the configuration.
std::string beside(const std::string& configuration, const std::string& file);

// Where the samples of a file lie, in metres, in the order x, y, z: x and y from the middle of the
// domain, z from its entry.
struct Sampling {
  std::array<double, 3> spacing{};
  std::array<double, 3> origin{};  // of the first sample
};

// What a reader needs; decides how [a][b][2] is understood.
//   kField   complex slices: [ny][nx][2], [nz][ny][nx][2], or a compound of two reals, r and i as
//            h5py writes complex numbers, in [ny][nx] or [nz][ny][nx]
//   kVolume  the same complex volumes, or a real one, [nz][ny][nx]
enum class Layout { kField, kVolume };

// An open data set of floating-point numbers, float or double, seen as slices [nz][ny][nx].
// Whatever is wrong ends the process with a message that begins with the place: no such file, no
// HDF5, no such data set, another shape or type, a size that the program cannot count, and, while
// reading, a value that is not finite. A program built without HDF5 says so.
class Dataset {
 public:
  // dataset: its path in the file, or its name among the fields of a monitor's file. where: the
  // place in the configuration that asks for it.
  Dataset(const std::string& file, const std::string& dataset, Layout layout,
          const std::string& where);
  ~Dataset();
  Dataset(Dataset&&) noexcept;
  Dataset& operator=(Dataset&&) = delete;
  Dataset(const Dataset&) = delete;
  Dataset& operator=(const Dataset&) = delete;

  [[nodiscard]] int slices() const;   // nz
  [[nodiscard]] int rows() const;     // ny
  [[nodiscard]] int columns() const;  // nx
  [[nodiscard]] bool is_complex() const;

  // From the attributes Spacing and, if it is there, Origin (x, y, z) of the data set or of the
  // group VTKHDF, as a field monitor writes them. Without Origin the grid is centred.
  [[nodiscard]] const std::optional<Sampling>& sampling() const;

  // Slices first..first+count-1, [count][ny][nx], with a second number for each sample if
  // is_complex. Memory: that of the slices.
  void read(int first, int count, double* values) const;

  // "FILE:/dataset", for messages.
  [[nodiscard]] const std::string& name() const;

 private:
  struct Inside;
  std::unique_ptr<Inside> inside_;
};

}  // namespace data
