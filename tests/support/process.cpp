#include "support/process.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace {

std::string read_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

RunResult run(const TempDir& directory, std::vector<std::string> command,
              const std::map<std::string, std::string>& environment) {
  const TempDir captured;
  const std::string out = captured.path("out").string();
  const std::string err = captured.path("err").string();
  const std::string folder = directory.path().string();
  std::vector<char*> argv;
  for (std::string& word : command) argv.push_back(word.data());
  argv.push_back(nullptr);

  const pid_t child = fork();
  if (child == 0) {
    const auto redirect = [](const char* path, int flags, int target) {
      const int descriptor = open(path, flags, 0600);
      return descriptor >= 0 && dup2(descriptor, target) >= 0;
    };
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    if (chdir(folder.c_str()) == 0 && redirect("/dev/null", O_RDONLY, STDIN_FILENO) &&
        redirect(out.c_str(), O_WRONLY | O_CREAT, STDOUT_FILENO) &&
        redirect(err.c_str(), O_WRONLY | O_CREAT, STDERR_FILENO))
      execv(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  struct rusage used {};
  wait4(child, &status, 0, &used);
  RunResult result;
  result.peak_bytes = 1024.0 * static_cast<double>(used.ru_maxrss);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  result.out = read_file(out);
  result.err = read_file(err);
  return result;
}

}  // namespace

TempDir::TempDir() {
  std::string name = (std::filesystem::temp_directory_path() / "zerith-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
  path_ = name;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempDir::path(const std::string& name) const {
  return path_ / name;
}

void TempDir::write(const std::string& name, const std::string& text) const {
  std::ofstream(path(name), std::ios::binary) << text;
}

std::string TempDir::read(const std::string& name) const {
  return read_file(path(name));
}

bool TempDir::has(const std::string& name) const {
  return std::filesystem::exists(path(name));
}

RunResult run_zerith(const TempDir& directory, const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment) {
  std::vector<std::string> command = {ZERITH_BINARY};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return run(directory, command, environment);
}

RunResult run_shell(const TempDir& directory, const std::string& command) {
  return run(directory, {"/bin/sh", "-c", command}, {{"ZERITH", ZERITH_BINARY}});
}

std::string without_times(const std::string& log) {
  return std::regex_replace(log, std::regex("done\\. [-+.0-9einf]+ms"), "done. Tms");
}

std::size_t differing_values(const std::string& a, const std::string& b) {
  std::vector<double> values[2];
  std::string shapes[2];
  for (const bool second : {false, true})
    for (const auto& row : csv_rows(second ? b : a)) {
      values[second].insert(values[second].end(), row.begin(), row.end());
      shapes[second] += std::to_string(row.size()) + " ";
    }
  if (shapes[0] != shapes[1] || values[0].empty()) return SIZE_MAX;
  double largest = 0.0;
  for (const double value : values[0]) largest = std::max(largest, std::fabs(value));
  std::size_t count = 0;
  for (std::size_t i = 0; i < values[0].size(); ++i) {
    const double value = std::fabs(values[0][i]);
    const bool is_same = std::fabs(values[0][i] - values[1][i]) <= 1.0001e-5 * value;
    if (!is_same && !(value <= 1e-6 * largest)) ++count;
  }
  return count;
}

std::vector<std::vector<double>> csv_rows(const std::string& text) {
  std::vector<std::vector<double>> rows;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back();
    std::istringstream values(line);
    for (std::string value; std::getline(values, value, ',');)
      rows.back().push_back(std::strtod(value.c_str(), nullptr));
  }
  return rows;
}
