#include <filesystem>

#include "data/dataset.h"

namespace data {

std::string place(const std::string& configuration, int line) {
  return line > 0 ? configuration + ": line " + std::to_string(line) : configuration;
}

std::string beside(const std::string& configuration, const std::string& file) {
  return (std::filesystem::path(configuration).parent_path() / file).string();
}

}  // namespace data
