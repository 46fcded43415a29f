// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <streambuf>
#include <string>

// One execution on an input; 0. libFuzzer's name, and the plain driver's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// While it lives, all that is printed is formatted and goes nowhere.
class Silence {
 public:
  Silence() : out_(std::cout.rdbuf(&nowhere_)), err_(std::cerr.rdbuf(&nowhere_)) {}
  ~Silence() {
    std::cout.rdbuf(out_);
    std::cerr.rdbuf(err_);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  class Nowhere : public std::streambuf {
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
  };
  Nowhere nowhere_;
  std::streambuf* out_;
  std::streambuf* err_;
};

// A file without a place in the file system, rewritten for each input.
class InputFile {
 public:
  InputFile();
  void write(const void* data, std::size_t size) const;
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  int descriptor_;
  std::string name_;
};
