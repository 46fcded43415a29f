// What stands for files of the field where the program was built without HDF5.
#include "diagnostics.h"
#include "io/field_file.h"
#include "io/io.h"

bool writes_field_files() {
  return false;
}

FieldPlaces lay_out(const FieldFile& file, const std::string& where) {
  diagnostics::fail(where + ": the file " + file.name + " cannot be written without HDF5");
}
