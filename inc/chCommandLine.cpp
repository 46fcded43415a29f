#include "chCommandLine.h"

#include <cstdlib>
#include <cstring>

#include "diagnostics.h"

namespace {

bool matches(const char* element, const char* keyword) {
  if (element[0] != '-') return false;
  ++element;
  if (element[0] == '-') ++element;
  return std::strcmp(element, keyword) == 0;
}

}  // namespace

bool chCommandLineGetBool(const char* keyword, int argc, char* argv[]) {
  for (int i = 1; i < argc; ++i)
    if (matches(argv[i], keyword)) return true;
  return false;
}

void chCommandLinePassback(int* p, const char* s) {
  *p = static_cast<int>(std::strtol(s, nullptr, 10));
}

void chCommandLinePassback(std::string* p, const char* s) {
  *p = s;
}

template <typename T>
bool chCommandLineGet(T* p, const char* keyword, int argc, char* argv[]) {
  bool found = false;
  for (int i = 1; i < argc; ++i) {
    if (!matches(argv[i], keyword)) continue;
    ++i;  // after a match the scan skips the value
    if (i >= argc) {
      const std::string option = argv[argc - 1];
      std::string text = "option ";
      text.append(option).append(" ends the command line without its value; write ");
      diagnostics::fail(text.append(option).append(" VALUE"));
    }
    chCommandLinePassback(p, argv[i]);
    found = true;
  }
  return found;
}

template bool chCommandLineGet<int>(int*, const char*, int, char*[]);
template bool chCommandLineGet<std::string>(std::string*, const char*, int, char*[]);
