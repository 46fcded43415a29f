// The table of a sweep: a CSV file with one row for each point, whole at any moment.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace sweep {

// Fields of a line of comma-separated text; a field in double quotes may hold commas.
std::vector<std::string> csv_fields(const std::string& line);

// The field as it stands in such a line, on one line and in quotes where it needs them.
std::string csv_field(const std::string& text);

// Columns: the swept keys, the figures that the points gave, `status` and `message`. A row is
// appended by one write; where a point brings a figure that the table hasn't got, the table is
// written anew beside the file and renamed over it, older rows with that figure empty.
class Table {
 public:
  // Reads an existing file and drops a last line that was cut short. Ends the process with status
  // 255 if the file is another sweep's, cannot be written or belongs to a sweep that still runs.
  Table(const std::string& name, std::vector<std::string> keys);
  ~Table();
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  // The status of the point's row; nothing if the point has no row.
  [[nodiscard]] std::optional<std::string> status(const std::vector<std::string>& values) const;

  // Removes the rows of these points by writing the table anew. False if that failed.
  [[nodiscard]] bool forget(const std::vector<std::vector<std::string>>& points);

  using Figures = std::vector<std::pair<std::string, std::string>>;  // column, text

  // False if the row could not be written; the file then is as before.
  [[nodiscard]] bool add(const std::vector<std::string>& values, const Figures& figures, int status,
                         const std::string& message);

 private:
  Table(std::string name, std::vector<std::string> keys, int descriptor);

  // Writes the table anew, with these columns and without the rows that are not in points_.
  [[nodiscard]] bool rewrite(const std::vector<std::string>& columns);
  [[nodiscard]] bool append(const std::string& line) const;

  std::string name_;
  std::vector<std::string> keys_;
  std::vector<std::string> columns_;                        // all of them
  std::map<std::vector<std::string>, std::string> points_;  // swept values; status
  int descriptor_ = -1;                                     // open, locked against another sweep
};

}  // namespace sweep
