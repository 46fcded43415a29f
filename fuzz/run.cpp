// Whole runs: the first line of an input holds the options, the rest is the configuration file. The
// grid has at most 8 x 8 x 8 samples, and names lead nowhere but into a folder of the process.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "diagnostics.h"
#include "fuzz.h"
#include "system/system.h"

int zerith_main(int argc, char* argv[]);

namespace {

bool is_small(int size) {
  return size <= 8;
}

bool has_small_grid(const std::string& name) {
  struct_sysOptions so;
  std::vector<struct_layer> layers;
  std::vector<struct_emfield> waves;
  try {
    parse(name, &so, &layers, &waves, true);
  } catch (const zerith::Error&) {
    return false;
  }
  return is_small(so.nx) && is_small(so.ny) && is_small(so.nz);
}

// Words of the options as a shell would split them. Those of more than two digits are left out:
// they could ask for so many threads.
std::vector<std::string> words_of(const std::string& line) {
  std::vector<std::string> words = {"zerith", "-i", "a.cfg"};
  std::istringstream text(line);
  for (std::string word; text >> word;)
    if (std::ranges::count_if(word, [](unsigned char c) { return std::isdigit(c) != 0; }) <= 2)
      words.push_back(word);
  return words;
}

// The working folder, of this process alone.
class OwnFolder {
 public:
  OwnFolder() : name_((std::filesystem::temp_directory_path() / "zerith-fuzz-XXXXXX").string()) {
    if (mkdtemp(name_.data()) == nullptr) std::abort();
    std::filesystem::current_path(name_);
  }
  ~OwnFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(name_, ignored);
  }
  OwnFolder(const OwnFolder&) = delete;
  OwnFolder& operator=(const OwnFolder&) = delete;

 private:
  std::string name_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const OwnFolder folder;
  std::string input(reinterpret_cast<const char*>(data), size);
  // A slash stays in closing tags alone: no name leads out of the folder.
  for (std::size_t i = 0; i < size; ++i)
    if (input[i] == '/' && (i == 0 || input[i - 1] != '[')) input[i] = '_';
  const std::size_t end = std::min(input.find('\n'), input.size());
  std::ofstream("a.cfg", std::ios::binary) << input.substr(std::min(end + 1, input.size()));

  const Silence silence;
  if (!has_small_grid("a.cfg")) return 0;
  std::vector<std::string> words = words_of(input.substr(0, end));
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  zerith_main(static_cast<int>(words.size()), argv.data());
  return 0;
}
