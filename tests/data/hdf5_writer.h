// HDF5 files for tests, written by the library itself.
#pragma once

#include <hdf5.h>

#include <complex>
#include <string>
#include <vector>

class Hdf5Writer {
 public:
  explicit Hdf5Writer(const std::string& path)
      : file_(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT)) {}
  ~Hdf5Writer() { H5Fclose(file_); }
  Hdf5Writer(const Hdf5Writer&) = delete;
  Hdf5Writer& operator=(const Hdf5Writer&) = delete;

  // Without values the data set is only declared.
  void write(const char* name, const std::vector<hsize_t>& shape, const double* values,
             hid_t type = H5T_IEEE_F64LE) {
    put(name, shape, values, type, H5T_NATIVE_DOUBLE);
  }
  // A compound of r and i, as h5py writes complex numbers; single: of floats.
  void write_compound(const char* name, const std::vector<hsize_t>& shape,
                      const std::complex<double>* values, bool single = false) {
    const hid_t memory = compound(H5T_NATIVE_DOUBLE, sizeof(double));
    const hid_t stored = single ? compound(H5T_IEEE_F32LE, 4) : compound(H5T_IEEE_F64LE, 8);
    put(name, shape, values, stored, memory);
    H5Tclose(stored);
    H5Tclose(memory);
  }
  // An attribute of the group, which is created if needed.
  void attribute(const char* group, const char* name, const std::vector<double>& values) {
    const hid_t object = H5Lexists(file_, group, H5P_DEFAULT) > 0
                             ? H5Oopen(file_, group, H5P_DEFAULT)
                             : H5Gcreate2(file_, group, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT);
    const hsize_t count = values.size();
    const hid_t space = H5Screate_simple(1, &count, nullptr);
    const hid_t made = H5Acreate2(object, name, H5T_IEEE_F64LE, space, H5P_DEFAULT, H5P_DEFAULT);
    H5Awrite(made, H5T_NATIVE_DOUBLE, values.data());
    H5Aclose(made);
    H5Sclose(space);
    H5Oclose(object);
  }

 private:
  static hid_t compound(hid_t part, std::size_t size) {
    const hid_t type = H5Tcreate(H5T_COMPOUND, 2 * size);
    H5Tinsert(type, "r", 0, part);
    H5Tinsert(type, "i", size, part);
    return type;
  }
  void put(const char* name, const std::vector<hsize_t>& shape, const void* values, hid_t stored,
           hid_t memory) {
    const hid_t space = H5Screate_simple(static_cast<int>(shape.size()), shape.data(), nullptr);
    const hid_t set = H5Dcreate2(file_, name, stored, space, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT);
    if (values != nullptr) H5Dwrite(set, memory, H5S_ALL, H5S_ALL, H5P_DEFAULT, values);
    H5Dclose(set);
    H5Sclose(space);
  }

  hid_t file_;
};
