#include "diagnostics.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>

namespace diagnostics {
namespace {

bool quiet = false;
std::string voice;  // of a process that is not the first of its run
std::vector<std::string> warned;
void (*leave_by)() = nullptr;

// The log goes first: a reader of both streams sees a message behind what led to it.
void write_line(const std::string& text) {
  std::cout.flush();
  std::cerr << "zerith: " + text + "\n" << std::flush;
}

}  // namespace

void set_quiet(bool is_quiet) {
  quiet = is_quiet || !voice.empty();
}

void speak_as(const std::string& name) {
  voice = name;
  set_quiet(quiet);
}

void warn(const std::string& text) {
  warned.push_back(text);
  if (!quiet) write_line("warning: " + text);
}

const std::vector<std::string>& warnings() {
  return warned;
}

void forget_warnings() {
  warned.clear();
}

void error(const std::string& text) {
  write_line("error: " + (voice.empty() ? text : voice + ": " + text));
}

void tell(const std::string& text) {
  if (!quiet) write_line(text);
}

bool shows_notes() {
  return !quiet && isatty(STDERR_FILENO) != 0;
}

void note(const std::string& text) {
  if (shows_notes()) write_line(text);
}

void progress(const std::string& text) {
  if (!shows_notes()) return;
  constexpr const char* kClearLine = "\r\033[K";
  std::cerr << (text.empty() ? kClearLine : kClearLine + ("zerith: " + text)) << std::flush;
}

void fail(const std::string& text) {
  write_line("error: " + (voice.empty() ? text : voice + ": " + text));
  if (leave_by != nullptr) leave_by();
  std::exit(-1);
}

void on_failure(void (*leave)()) {
  leave_by = leave;
}

}  // namespace diagnostics
