#include <cerrno>
#include <cstring>
#include <fstream>
#include <span>

#include "diagnostics.h"
#include "log.h"
#include "system/keys.h"
#include "system/suggest.h"
#include "system/system.h"

namespace {

// A line splits into the text before the first equals sign and the value behind it, which ends at a
// semicolon. Leading equals signs belong to neither, nor do leading semicolons of the value.
struct SplitLine {
  std::string left;
  std::string right;
  bool has_assign = false;
};

SplitLine split(const std::string& line) {
  SplitLine parts;
  const std::size_t begin = line.find_first_not_of(ASSIGN);
  if (begin == std::string::npos) return parts;
  const std::size_t assign = line.find(ASSIGN, begin);
  parts.left = line.substr(begin, assign - begin);
  if (assign == std::string::npos) return parts;
  parts.has_assign = true;
  const std::size_t value = line.find_first_not_of(END, assign + 1);
  if (value != std::string::npos)
    parts.right = line.substr(value, line.find_first_of(END, value) - value);
  return parts;
}

template <typename Record>
std::vector<std::string_view> names_of(std::span<const Key<Record>> keys) {
  std::vector<std::string_view> names;
  for (const Key<Record>& key : keys) names.push_back(key.name);
  return names;
}

class Parser {
 public:
  Parser(const std::string& filename, struct_sysOptions* so, std::vector<struct_layer>* layers,
         std::vector<struct_emfield>* fields, bool is_quiet)
      : filename_(filename), so_(so), layers_(layers), fields_(fields), log_(is_quiet) {}

  void read_lines(std::istream& file);

 private:
  void read_line(std::string line);
  void take_tag(const SplitLine& parts);
  void take_key(const SplitLine& parts);
  void commit();

  template <typename Record>
  void store(std::span<const Key<Record>> keys, const char* tag, Record& record,
             const SplitLine& parts);

  [[nodiscard]] std::string where() const {
    return filename_ + ": line " + std::to_string(line_number_) + ": ";
  }

  const std::string& filename_;
  struct_sysOptions* so_;
  std::vector<struct_layer>* layers_;
  std::vector<struct_emfield>* fields_;
  Log log_;
  int line_number_ = 0;
  struct_emfield wave_;    // under construction
  struct_layer layer_;     // under construction
  section opened_ = NONE;  // the section opened last
  section closed_ = NONE;  // the closing tag seen last and not yet matched
};

void Parser::read_lines(std::istream& file) {
  std::string line;
  while (std::getline(file, line)) {
    ++line_number_;
    if (line.size() >= MAX_CHARS_PER_LINE)
      diagnostics::fail(where() + "the line has " + std::to_string(line.size()) +
                        " characters, blanks included, and the limit is " +
                        std::to_string(MAX_CHARS_PER_LINE - 1) + "; shorten or break it");
    read_line(line);
  }
  if (!file.eof()) diagnostics::fail(filename_ + ": cannot be read; is it a directory?");
  if (opened_ == WAVE_S || opened_ == LAYER_S)
    diagnostics::warn(filename_ + ": the last [" + (opened_ == WAVE_S ? "wave" : "layer") +
                      "] has no closing tag and is ignored");
}

void Parser::read_line(std::string line) {
  removeBlanks(line.data());
  line.resize(std::strlen(line.c_str()));  // also ends the line at a stray zero byte
  if (line.empty()) return;
  const SplitLine parts = split(line);
  if (parts.left.empty())
    diagnostics::fail(where() + "the line has nothing but equals signs; write key = value");
  if (parts.right.empty())
    take_tag(parts);
  else
    take_key(parts);
  commit();
}

// Any text without a value stands here; what matches no tag is a free comment.
void Parser::take_tag(const SplitLine& parts) {
  log_ << "\t\t\t\t" << parts.left << std::endl;
  std::vector<std::string_view> known;
  for (const Tag& tag : tags()) {
    known.push_back(tag.text);
    if (parts.left != tag.text) continue;
    if (tag.opens != NONE) opened_ = tag.opens;
    if (tag.closes != NONE) closed_ = tag.closes;
    return;
  }
  const bool is_other_method = parts.left == "[/fdtd]" || parts.left == "[/rcwa]";
  if (parts.has_assign)
    diagnostics::warn(where() + "key " + quoted(parts.left) + " has no value and is ignored");
  else if (parts.left.front() == '[' && !is_other_method)
    diagnostics::warn(where() + "unknown tag " + quoted(parts.left) + " is ignored" +
                      suggestion(parts.left.substr(0, parts.left.find(']') + 1), known));
}

void Parser::take_key(const SplitLine& parts) {
  log_ << "\t\t\t\t\t" << parts.left << " =\t" << parts.right << std::endl;
  switch (opened_) {
    case GLOBAL_S:
      return store(global_keys(), "[global]", *so_, parts);
    case WAVE_S:
      return store(wave_keys(), "[wave]", wave_, parts);
    case LAYER_S:
      return store(layer_keys(), "[layer]", layer_, parts);
    case NONE:
      diagnostics::warn(where() + "key " + quoted(parts.left) +
                        " stands in no section and is ignored");
      return;
    default:
      return;  // a section of another method
  }
}

template <typename Record>
void Parser::store(std::span<const Key<Record>> keys, const char* tag, Record& record,
                   const SplitLine& parts) {
  for (const Key<Record>& key : keys) {
    if (parts.left != key.name) continue;
    if (!key.store(record, parts.right))
      diagnostics::warn(where() + "unknown value " + quoted(parts.right) + " of " +
                        quoted(key.name) + " in " + tag +
                        suggestion(parts.right, {key.keywords.begin(), key.keywords.end()}));
    return;
  }
  diagnostics::warn(where() + "unknown key " + quoted(parts.left) + " in " + tag +
                    suggestion(parts.left, names_of(keys)));
}

void make_materials_agree(struct_layer& l, bool permittivity) {
  const auto derive = [permittivity](double& n, double& k, double& eps_r, double& eps_i) {
    const cpx derived = permittivity ? epsToN({eps_r, eps_i}) : nToEps({n, k});
    (permittivity ? n : eps_r) = derived.real();
    (permittivity ? k : eps_i) = derived.imag();
  };
  derive(l.n, l.k, l.eps_r, l.eps_i);
  derive(l.ne, l.ke, l.epse_r, l.epse_i);
}

// A closing tag is latched whatever is open, and acts when its section is the open one; it may do
// so lines later.
void Parser::commit() {
  if (opened_ == LAYER_S && closed_ == LAYER_E) {
    make_materials_agree(layer_, so_->permittivity);
    layers_->push_back(layer_);
    layer_.reset();
  } else if (opened_ == WAVE_S && closed_ == WAVE_E) {
    fields_->push_back(wave_);
    wave_.reset();
  } else if (!(opened_ == GLOBAL_S && closed_ == GLOBAL_E)) {
    return;
  }
  opened_ = NONE;
  closed_ = NONE;
}

}  // namespace

void parse(const std::string& filename, struct_sysOptions* so, std::vector<struct_layer>* layers,
           std::vector<struct_emfield>* fields, bool is_quiet) {
  const Log log(is_quiet);
  so->reset();
  so->sysname = filename;

  std::ifstream file(filename);
  if (!file.good()) {
    const std::string reason = std::strerror(errno);
    log << "\033[31m[E] Error! Configuration file could not be opened.\033[0m" << std::endl;
    diagnostics::fail(filename + ": configuration file cannot be opened: " + reason +
                      "; name it with -i FILE");
  }
  Parser(filename, so, layers, fields, is_quiet).read_lines(file);

  if (so->nz != 0) so->dz = so->z / so->nz;
  if (so->ny != 0) so->dy = so->y / so->ny;
  if (so->nx != 0) so->dx = so->x / so->nx;
  if (so->scl < M || so->scl > PM)
    log << "\033[31m[W] No scale specified in" << filename << ". Default is nm.\033[0m"
        << std::endl;
  so->f = metres_per_unit(so->scl);
  so->updated = true;
}
