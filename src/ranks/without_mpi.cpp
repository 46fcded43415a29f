// The one rank of a build without MPI.
#include <cstring>

#include "ranks/ranks.h"

namespace ranks {

void join(int& /*argc*/, char**& /*argv*/) {
  require_alone(
      "this build is without MPI and each would do the whole run: build with -DZERITH_MPI=on, or "
      "start one process");
}

int count() {
  return 1;
}
int mine() {
  return 0;
}
void meet() {}
int most(int mine) {
  return mine;
}
std::string from_first(const std::string& text) {
  return text;
}
std::string from_all(const std::string& mine) {
  return mine;
}

void gather_lines(const void* mine, void* all, int lines, std::size_t line_bytes) {
  std::memcpy(all, mine, static_cast<std::size_t>(lines) * line_bytes);
}
void gather_lines_everywhere(const void* mine, void* all, int lines, std::size_t line_bytes) {
  gather_lines(mine, all, lines, line_bytes);
}
void scatter_lines(const void* all, void* mine, int lines, std::size_t line_bytes) {
  gather_lines(all, mine, lines, line_bytes);
}

struct Transpose::Inside {
  int rows, columns;
  std::vector<std::complex<double>> in, out;
};

Transpose::Transpose(int rows, int columns)
    : inside_(std::make_unique<Inside>(Inside{rows, columns, {}, {}})) {
  const auto size = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
  inside_->in.resize(size);
  inside_->out.resize(size);
}
Transpose::~Transpose() = default;

std::complex<double>* Transpose::in() {
  return inside_->in.data();
}
const std::complex<double>* Transpose::out() const {
  return inside_->out.data();
}

namespace {

void turn(const std::complex<double>* from, int rows, int columns, std::complex<double>* to) {
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < columns; ++column)
      to[static_cast<std::size_t>(column) * static_cast<std::size_t>(rows) +
         static_cast<std::size_t>(row)] = *from++;
}

}  // namespace

void Transpose::to_columns() {
  turn(in(), inside_->rows, inside_->columns, inside_->out.data());
}
void Transpose::to_rows() {
  turn(in(), inside_->columns, inside_->rows, inside_->out.data());
}

}  // namespace ranks
