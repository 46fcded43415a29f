// HDF5 data sets as input: fields and volumes of indices.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace data {

// "FILE.cfg: line 12", the place of an error; the file alone for line 0.
std::string place(const std::string& configuration, int line);

// The path of an input file: names are relative to the configuration's folder.
std::string beside(const std::string& configuration, const std::string& file);

// The positions of a file's samples, in metres, in the order x, y, z. x and y are from the middle
// of the domain, z from its entry.
struct Sampling {
  std::array<double, 3> spacing{};
  std::array<double, 3> origin{};  // of the first sample
};

// The data that a reader needs; decides how [a][b][2] is read.
//   kField   complex slices: [ny][nx][2], [nz][ny][nx][2], or a compound of two reals, r and i as
//            h5py writes complex numbers, in [ny][nx] or [nz][ny][nx]
//   kVolume  the same complex volumes, or a real one, [nz][ny][nx]
enum class Layout { kField, kVolume };

// An open data set of floating-point numbers, float or double, as slices [nz][ny][nx]. Throws
// Error, with the place first, if there is no such file, HDF5 or data set. Also throws on another
// shape or type, a size that is too large, or a value that is not finite. In a build without HDF5
// the message states this.
class Dataset {
 public:
  // dataset: its path in the file, or its name among the fields of a monitor's file. where: the
  // place in the configuration that names it.
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

  // From the attributes Spacing and, if present, Origin (x, y, z) of the data set or of the group
  // VTKHDF. A field monitor writes them. Without Origin the grid is centred.
  [[nodiscard]] const std::optional<Sampling>& sampling() const;

  // Slices first..first+count-1, [count][ny][nx]; two numbers for each sample if is_complex.
  // Memory: that of the slices.
  void read(int first, int count, double* values) const;

  // "FILE:/dataset", for messages.
  [[nodiscard]] const std::string& name() const;

 private:
  struct Inside;
  std::unique_ptr<Inside> inside_;
};

}  // namespace data
