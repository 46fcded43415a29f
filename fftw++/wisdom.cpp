#include "wisdom.h"

#include <sys/stat.h>

#include <cerrno>

namespace fftwpp {
namespace {

constexpr std::size_t kLongestName = 64;  // FFTW's own limit of a solver's name
constexpr off_t kLargestFile = off_t{64} << 20U;

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool is_hexadecimal(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'f');
}
bool is_blank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool is_of_name(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '-' ||
         c == '.';
}

// Reads a text from the front. After the first mismatch all reads fail.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool is_good() const { return is_good_; }
  [[nodiscard]] bool sees(std::string_view expected) const { return rest_.starts_with(expected); }

  Reader& text(std::string_view expected) {
    is_good_ = is_good_ && sees(expected);
    if (is_good_) rest_.remove_prefix(expected.size());
    return *this;
  }

  // Any number of blanks and line ends, as FFTW accepts them.
  Reader& blanks() { return run(is_blank, 0, rest_.size()); }

  // Between least and most characters of a kind, not followed by another.
  Reader& run(bool (*is_kind)(char), std::size_t least, std::size_t most) {
    std::size_t length = 0;
    while (length < rest_.size() && is_kind(rest_[length])) ++length;
    is_good_ = is_good_ && length >= least && length <= most;
    if (is_good_) rest_.remove_prefix(length);
    return *this;
  }

  // A number of at most this many bits, as FFTW prints it.
  Reader& bits(unsigned count) {
    text("#x");
    unsigned long value = 0;
    for (std::size_t i = 0; i < rest_.size() && i < 8 && is_hexadecimal(rest_[i]); ++i)
      value = value * 16 +
              static_cast<unsigned long>(is_digit(rest_[i]) ? rest_[i] - '0' : rest_[i] - 'a' + 10);
    is_good_ = is_good_ && value >> count == 0;
    return run(is_hexadecimal, 1, 8);
  }

  Reader& checksum() {
    for (int word = 0; word < 4; ++word) blanks().text("#x").run(is_hexadecimal, 8, 8);
    return *this;
  }

 private:
  std::string_view rest_;
  bool is_good_ = true;
};

}  // namespace

bool is_sound_wisdom(std::string_view text) {
  Reader reader(text);
  reader.blanks().text("(").run(is_of_name, 1, kLongestName).blanks();
  reader.run(is_of_name, 1, kLongestName).checksum().blanks();
  while (reader.is_good() && !reader.sees(")")) {
    reader.text("(").run(is_of_name, 1, kLongestName - 1).blanks().run(is_digit, 1, 4);
    // Two sets of planner flags and the time limit, of the widths of their fields.
    reader.blanks().bits(20).blanks().bits(20).blanks().bits(9);
    reader.checksum().blanks().text(")").blanks();
  }
  return reader.text(")").is_good();
}

bool is_readable_wisdom(const char* name) {
  struct stat status {};
  return stat(name, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= kLargestFile;
}

bool is_writable_wisdom(const char* name) {
  struct stat status {};
  return stat(name, &status) == 0 ? S_ISREG(status.st_mode) : errno == ENOENT;
}

}  // namespace fftwpp
