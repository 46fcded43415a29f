#include "io/table.h"

#include "io/units.h"

OutputFile& Table::file() {
  if (!file_) {
    file_ = std::make_unique<OutputFile>(name_);
    const char* separator = "";
    for (const auto& [name, unit] : columns_) {
      *file_ << separator << name << " [" << unit << ']';
      separator = ",";
    }
    *file_ << '\n';
  }
  return *file_;
}

void Table::add_row(const std::vector<double>& numbers) {
  const char* separator = "";
  for (const double number : numbers) {
    (file() << separator).put(number, 9);
    separator = ",";
  }
  file() << '\n';
}

void Table::save(ByteWriter& state) {
  state.put(file().save());
}

void Table::restore(ByteReader& from) {
  file_ = std::make_unique<OutputFile>(name_, from.take<std::int64_t>());
}

TableUnits::TableUnits(const Grid& grid)
    : metres(grid.metres), length(length_unit(grid)), area_power("amp^2 " + length + "^2") {}
