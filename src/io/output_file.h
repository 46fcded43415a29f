// A text file that is written in a few large pieces, and says if it could not be.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class OutputFile {
 public:
  static constexpr std::int64_t kLost = -1;

  // Replaces the file name. What cannot be opened or written is lost: an error, said once, and the
  // run goes on.
  explicit OutputFile(std::string name);
  // Goes on behind the first `position` bytes of the file name, as save() gave it; what the file
  // holds beyond is cut off. One that is shorter, or is gone, ends the process.
  OutputFile(std::string name, std::int64_t position);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Numbers take the form of a stream's default format, six significant digits.
  OutputFile& operator<<(double value) { return put(value, 6); }
  OutputFile& operator<<(int value);
  OutputFile& operator<<(std::string_view text);
  OutputFile& operator<<(char c);
  // The same with as many significant digits.
  OutputFile& put(double value, int digits);

  // Brings everything to the disk; how many bytes that is from the beginning of the file, or
  // kLost.
  std::int64_t save();

 private:
  void flush();
  void fail();

  std::string name_;
  int descriptor_;
  std::int64_t position_ = 0;  // bytes handed to the system, those lost included
  std::string buffer_;
};

// Writes all of text to a descriptor, whatever the pieces; false, with errno, if it could not.
bool write_all(int descriptor, std::string_view text);

// The file that name leads to, links followed, also those that lead to no file yet.
std::string target_of(const std::string& name);

// The folder that has, or would have, that file.
std::string folder_of(const std::string& name);
