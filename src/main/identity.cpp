#include "main/identity.h"

#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "main/stages.h"

std::string hash_of(const std::string& text) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001b3U;
  }
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
  return digits;
}

namespace {

// An input of gigabytes is told by its size and its time.
void add_file(std::ostream& out, const std::string& name) {
  if (name.empty()) return;
  struct stat status {};
  out << '\0' << name;
  if (stat(name.c_str(), &status) == 0)
    out << '\0' << status.st_size << '\0' << status.st_mtim.tv_sec << '.' << status.st_mtim.tv_nsec;
}

}  // namespace

std::string identity_of(const Run& run) {
  const Options& o = run.options;
  std::ostringstream all;
  all << VERSION << '\0' << std::ifstream(o.config_file).rdbuf();
  for (const std::string& set : o.overrides) all << '\0' << set;
  for (const struct_layer& l : run.description.layers) add_file(all, l.file);
  for (const struct_emfield& f : run.description.waves) add_file(all, f.file);
  for (const Monitor& m : run.description.monitors) add_file(all, m.mode_file);
  all << '\0' << o.is_cpu << o.is_gpu << o.is_fast << run.is_streamed << ' ' << o.p << ' '
      << o.layer << ' ' << o.kernel << ' ' << o.blockSize << ' ' << o.tolerance << ' '
      << o.field_file << ' ' << o.is_quiet;
  return hash_of(all.str());
}
