#include "io/section_stream.h"

#include <algorithm>
#include <utility>

#include "wpm/byte_stream.h"

SectionStream::SectionStream(std::string name, plane p, int s, const Grid& grid)
    : name_(std::move(name)),
      side_(grid.nx),
      samples_(side_ * side_),
      slices_(grid.nz),
      is_across_z_(p != XZ && p != ZX && p != YZ && p != ZY),
      s_(s) {
  const bool is_xz = p == XZ || p == ZX;
  const std::int64_t first = is_xz ? s * side_ : s;
  step_ = is_xz ? 1 : side_;
  begin_ = (first % samples_ + samples_) % samples_;
  shift_ = (first - begin_) / samples_;
  runs_on_ = begin_ + (side_ - 1) * step_ >= samples_;
}

bool SectionStream::shows(int k) const {
  if (is_across_z_) return s_ == -1 || s_ == k;
  return is_row(k - shift_) || (runs_on_ && is_row(k - shift_ - 1));
}

SliceRequest SectionStream::required() const {
  SliceRequest request;
  if (is_across_z_) return request;
  if (step_ == 1) {
    request.first_row = static_cast<int>(begin_ / side_);
    request.end_row = request.first_row + 1;
  } else {
    request.first_column = static_cast<int>(begin_ % side_);
    request.end_column = request.first_column + 1;
  }
  return request;
}

void SectionStream::take(int k, const SliceValues& values) {
  if (!shows(k)) return;
  if (is_across_z_) {
    write_sheet(values, true);
    return;
  }
  const std::int64_t row = k - shift_;
  if (runs_on_ && is_row(row - 1)) {
    fill_row(row - 1, values, samples_);
    write_row();
  }
  if (is_row(row)) {
    fill_row(row, values, 0);
    if (!runs_on_) write_row();
  }
}

void SectionStream::finish() {
  if (is_across_z_) {
    // Planes across z beyond the last have no separators.
    if (s_ != -1 && (s_ < 0 || s_ >= slices_)) write_sheet({}, s_ < slices_);
  } else {
    while (written_ < slices_) write_row();
    file() << '\n';
  }
  file();
  file_.reset();
}

OutputFile& SectionStream::file() {
  if (!file_) file_ = std::make_unique<OutputFile>(name_);
  return *file_;
}

void SectionStream::write_sheet(const SliceValues& values, bool has_separators) {
  for (std::int64_t i = 0; i < samples_; ++i) {
    file() << values[i];
    if (has_separators) file() << ',';
    if (i % side_ == side_ - 1) file() << '\n';
  }
  file() << '\n';
}

// Takes what a slice holds of a row; its elements begin at `offset` in the row's own count. Rows
// before it that no slice has touched lie outside the volume.
void SectionStream::fill_row(std::int64_t row, const SliceValues& values, std::int64_t offset) {
  while (written_ < row) write_row();
  row_.resize(static_cast<std::size_t>(side_), 0.0);
  std::int64_t element = begin_ - offset;
  for (double& value : row_) {
    if (element >= 0 && element < samples_) value = values[element];
    element += step_;
  }
}

void SectionStream::write_row() {
  row_.resize(static_cast<std::size_t>(side_), 0.0);
  for (const double value : row_) file() << value << ',';
  file() << '\n';
  row_.clear();
  ++written_;
}

SinkState SectionStream::save() {
  ByteWriter state;
  state.put(file().save());
  state.put(written_);
  state.put_all(row_);
  return state.bytes();
}

void SectionStream::restore(const SinkState& state) {
  ByteReader from(state);
  file_ = std::make_unique<OutputFile>(name_, from.take<std::int64_t>());
  written_ = from.take<std::int64_t>();
  from.take_all(row_);
}
