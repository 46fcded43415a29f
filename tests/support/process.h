// Runs of the real program, each in a temporary directory of its own.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

// A directory that is removed with the object.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  [[nodiscard]] std::filesystem::path path(const std::string& name = "") const;
  void write(const std::string& name, const std::string& text) const;
  [[nodiscard]] std::string read(const std::string& name) const;  // "" if it does not exist
  [[nodiscard]] bool has(const std::string& name) const;

 private:
  std::filesystem::path path_;
};

struct RunResult {
  int status = -1;  // exit status, or 128 + signal
  std::string out;
  std::string err;
  double peak_bytes = 0;  // the program's peak memory
};

// Runs zerith with these arguments in the directory, with empty standard input. environment adds to
// the caller's variables.
RunResult run_zerith(const TempDir& directory, const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment = {});

// Runs a shell command in the directory; $ZERITH names the program.
RunResult run_shell(const TempDir& directory, const std::string& command);

// A log with its times replaced by T. They differ from run to run.
std::string without_times(const std::string& log);

// The numbers of a comma-separated file, row by row; empty lines give empty rows.
std::vector<std::vector<double>> csv_rows(const std::string& text);

// Counts the values of two such files that differ at six digits; all, if their shapes differ.
// Values up to 1e-6 of the file's largest are round-off and do not count. A value half way between
// two roundings may show either.
std::size_t differing_values(const std::string& a, const std::string& b);
