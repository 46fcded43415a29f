#include "main/sweep_table.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "diagnostics.h"

namespace sweep {
namespace {

std::string joined(const std::vector<std::string>& fields) {
  std::string line;
  for (const std::string& field : fields) line += csv_field(field) + ',';
  line.back() = '\n';
  return line;
}

bool write_all(int descriptor, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t written = write(descriptor, text.data() + done, text.size() - done);
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) done += static_cast<std::size_t>(written);
  }
  return true;
}

// Opened for appending and locked; a file system that knows no locks is taken as it is.
int open_locked(const std::string& name) {
  const int descriptor = open(name.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (descriptor < 0) diagnostics::fail(name + ": cannot be written: " + std::strerror(errno));
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    close(descriptor);
    diagnostics::fail(name + ": another sweep writes this table; name one of its own by --table");
  }
  return descriptor;
}

std::vector<std::string> whole_lines(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line) && !file.eof();) lines.push_back(line);
  return lines;
}

}  // namespace

std::vector<std::string> csv_fields(const std::string& line) {
  std::vector<std::string> fields(1);
  bool is_quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (c == '"') {
      // A doubled quote inside quotes is one quote.
      if (is_quoted && i + 1 < line.size() && line[i + 1] == '"')
        fields.back() += line[i++];
      else
        is_quoted = !is_quoted;
    } else if (c == ',' && !is_quoted) {
      fields.emplace_back();
    } else if (c != '\r') {
      fields.back() += c;
    }
  }
  return fields;
}

std::string csv_field(const std::string& text) {
  std::string field = text;
  std::replace_if(
      field.begin(), field.end(), [](unsigned char c) { return c < ' '; }, ' ');
  if (field.find_first_of(",\"") == std::string::npos) return field;
  std::string quoted = "\"";
  for (const char c : field) quoted += c == '"' ? std::string(2, c) : std::string(1, c);
  return quoted + '"';
}

Table::Table(std::string name, std::vector<std::string> keys, int descriptor)
    : name_(std::move(name)), keys_(std::move(keys)), descriptor_(descriptor) {}

// The other constructor is done before the table is read, so an error closes the file.
Table::Table(const std::string& name, std::vector<std::string> keys)
    : Table(name, std::move(keys), open_locked(name)) {
  std::vector<std::string> bare = keys_;
  bare.insert(bare.end(), {"status", "message"});
  const std::vector<std::string> lines = whole_lines(name_);
  if (lines.empty() && lseek(descriptor_, 0, SEEK_END) == 0) {
    columns_ = bare;
    if (!append(joined(columns_)))
      diagnostics::fail(name_ + ": cannot be written: " + std::strerror(errno));
    return;
  }
  columns_ = lines.empty() ? std::vector<std::string>() : csv_fields(lines.front());
  const auto end = columns_.end();
  if (columns_.size() < bare.size() || !std::equal(keys_.begin(), keys_.end(), columns_.begin()) ||
      !std::equal(end - 2, end, bare.end() - 2))
    diagnostics::fail(name_ + " is not a table of this sweep, whose columns begin " +
                      joined(keys_).substr(0, joined(keys_).size() - 1) +
                      "; move it away or name another by --table");
  std::size_t length = 0;
  for (const std::string& line : lines) {
    length += line.size() + 1;
    std::vector<std::string> fields = csv_fields(line);
    fields.resize(columns_.size());
    const std::string status = fields[fields.size() - 2];
    fields.resize(keys_.size());
    points_[fields] = status;
  }
  points_.erase(keys_);
  if (ftruncate(descriptor_, static_cast<off_t>(length)) != 0)
    diagnostics::fail(name_ + ": cannot be written: " + std::strerror(errno));
}

Table::~Table() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::optional<std::string> Table::status(const std::vector<std::string>& values) const {
  const auto row = points_.find(values);
  return row == points_.end() ? std::nullopt : std::optional(row->second);
}

bool Table::forget(const std::vector<std::vector<std::string>>& points) {
  for (const std::vector<std::string>& values : points) points_.erase(values);
  return points.empty() || rewrite(columns_);
}

bool Table::add(const std::vector<std::string>& values, const Figures& figures, int status,
                const std::string& message) {
  std::vector<std::string> columns = columns_;
  for (const auto& [column, text] : figures)
    if (std::find(columns.begin(), columns.end(), column) == columns.end())
      columns.insert(columns.end() - 2, column);
  if (columns.size() > columns_.size() && !rewrite(columns)) return false;

  std::vector<std::string> row(columns_.size());
  std::copy(values.begin(), values.end(), row.begin());
  for (const auto& [column, text] : figures)
    row[static_cast<std::size_t>(std::find(columns_.begin(), columns_.end(), column) -
                                 columns_.begin())] = text;
  row[row.size() - 2] = std::to_string(status);
  row[row.size() - 1] = message;
  if (!append(joined(row))) return false;
  points_[values] = std::to_string(status);
  return true;
}

// A row that found no room is taken back.
bool Table::append(const std::string& line) const {
  const off_t length = lseek(descriptor_, 0, SEEK_END);
  if (write_all(descriptor_, line)) return true;
  const int why = errno;
  if (ftruncate(descriptor_, length) != 0) return false;
  errno = why;
  return false;
}

// New columns stand in front of the last two.
bool Table::rewrite(const std::vector<std::string>& columns) {
  const std::string beside = name_ + ".new";
  std::remove(beside.c_str());
  const int descriptor = open_locked(beside);
  std::string text;
  for (const std::string& line : whole_lines(name_)) {
    std::vector<std::string> row = csv_fields(line);
    row.resize(columns_.size());
    row.insert(row.end() - 2, columns.size() - columns_.size(), "");
    const std::vector<std::string> values(row.begin(),
                                          row.begin() + static_cast<std::ptrdiff_t>(keys_.size()));
    if (text.empty())
      text = joined(columns);
    else if (points_.contains(values))
      text += joined(row);
  }
  if (!write_all(descriptor, text) || fsync(descriptor) != 0 ||
      std::rename(beside.c_str(), name_.c_str()) != 0) {
    const int why = errno;
    close(descriptor);
    std::remove(beside.c_str());
    errno = why;
    return false;
  }
  close(descriptor_);
  descriptor_ = descriptor;
  columns_ = columns;
  return true;
}

}  // namespace sweep
