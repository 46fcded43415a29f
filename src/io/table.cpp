#include "io/table.h"

#include "io/marks.h"
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

void Table::save(Mark& mark) {
  put(mark, file().save());
}

void Table::go_back_to(std::string_view& rest) {
  file_ = std::make_unique<OutputFile>(name_, take_value<std::int64_t>(rest));
}

TableUnits::TableUnits(const Grid& grid)
    : metres(grid.metres), length(length_unit(grid)), area_power("amp^2 " + length + "^2") {}
