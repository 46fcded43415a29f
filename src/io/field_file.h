// How a file of the field is laid out: HDF5, in the VTKHDF layout of image data, version 1.0 (VTK
// file formats, https://docs.vtk.org), readable by VTK, ParaView and h5py.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// One array of the file, PointData/<name>: [slices][rows][columns], and [2] for two components.
struct FieldArray {
  std::string name, unit, meaning;
  int components = 1;
};

struct FieldFile {
  std::string name;
  std::array<int, 3> sizes{};        // columns, rows, slices
  std::array<double, 3> origin{};    // of the first sample, m
  std::array<double, 3> spacing{};   // m
  std::size_t bytes_per_number = 8;  // 4: single precision
  std::vector<FieldArray> arrays;
  std::vector<std::pair<std::string, std::string>> texts;  // outside of the VTK group
  double wavelength = 0;                                   // m

  // Bytes of one slice of an array; of all arrays.
  [[nodiscard]] std::int64_t slice_bytes(const FieldArray& array) const;
  [[nodiscard]] std::int64_t bytes() const;
};

// Where the numbers of a file lie, in bytes from its beginning.
struct FieldPlaces {
  std::vector<std::int64_t> arrays;
  std::int64_t slices_written = 0;  // a 64-bit count of the slices that hold the field
};

// Creates the file, complete but for its numbers, which are 0 and lie in one piece for each array,
// in this machine's format: what follows writes them where they belong, without the library, and
// whenever that stops the file can be read. Ends the process if the file cannot be had; `where`
// begins the message.
FieldPlaces lay_out(const FieldFile& file, const std::string& where);
