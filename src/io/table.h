// A table of numbers: one header line that names columns and units, nine significant digits.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "io/output_file.h"
#include "wpm/byte_stream.h"
#include "wpm/sink.h"

struct Column {
  std::string name, unit;
};

class Table {
 public:
  Table(std::string name, std::vector<Column> columns)
      : name_(std::move(name)), columns_(std::move(columns)) {}

  // Creates the file with its header, if that has not been done.
  OutputFile& file();
  // One number for each column.
  void add_row(const std::vector<double>& numbers);
  void finish() { file_.reset(); }

  // Brings the table to the disk and writes its length to a state, and back.
  void save(ByteWriter& state);
  void restore(ByteReader& from);

 private:
  std::string name_;
  std::vector<Column> columns_;
  std::unique_ptr<OutputFile> file_;
};

// The units in which tables give what is worked out in metres and amplitudes.
struct TableUnits {
  explicit TableUnits(const Grid& grid);
  double metres;  // per unit of length
  std::string length, area_power;
};
