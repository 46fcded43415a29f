// A text file that is written once, in a few large pieces, and says if it could not be.
#pragma once

#include <string>
#include <string_view>

class OutputFile {
 public:
  enum class Mode { kReplace, kAppend };

  OutputFile(std::string name, Mode mode);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Numbers take the form of a stream's default format, six significant digits.
  OutputFile& operator<<(double value);
  OutputFile& operator<<(int value);
  OutputFile& operator<<(std::string_view text);
  OutputFile& operator<<(char c);

 private:
  void flush();
  void fail();

  std::string name_;
  int descriptor_;
  std::string buffer_;
};

// Warns if a file of that name could not be written: tried by opening it, its contents untouched.
void warn_if_unwritable(const std::string& name);
