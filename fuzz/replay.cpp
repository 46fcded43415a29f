// Gives a target each file of the folders named, once: what libFuzzer does with a corpus, without
// libFuzzer.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz.h"

int main(int argc, char* argv[]) {
  std::vector<std::filesystem::path> inputs;
  for (int i = 1; i < argc; ++i)
    if (std::filesystem::exists(argv[i]))
      for (const auto& entry :
           std::filesystem::directory_iterator(std::filesystem::absolute(argv[i])))
        inputs.push_back(entry.path());
  std::sort(inputs.begin(), inputs.end());
  for (const std::filesystem::path& input : inputs) {
    std::ifstream file(input, std::ios::binary);
    const std::vector<char> data(std::istreambuf_iterator<char>(file), {});
    std::cerr << input.filename().string() << '\n';
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(data.data()), data.size());
  }
  return 0;
}
