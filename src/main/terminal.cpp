#include "main/terminal.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string_view>

using zerith::Message;

void Terminal::set_name(const std::string& name) {
  name_ = name;
  is_quiet_ = true;
}

bool Terminal::shows_notes() const {
  return !is_quiet_ && isatty(STDERR_FILENO) != 0;
}

void Terminal::show(Message kind, const std::string& text) {
  if (kind == Message::kError) {
    print(kind, text);
  } else if (kind == Message::kProgress) {
    if (!shows_notes()) return;
    constexpr const char* kClearLine = "\r\033[K";
    std::cerr << (text.empty() ? kClearLine : kClearLine + line_of(kind, text)) << std::flush;
  } else if (kind == Message::kNote ? shows_notes() : !is_quiet_) {
    print(kind, text);
  }
}

// The log goes first: a reader of both streams sees a message after what led to it.
void Terminal::print(Message kind, const std::string& text) const {
  std::cout.flush();
  std::cerr << line_of(kind, name_.empty() ? text : name_ + ": " + text) + "\n" << std::flush;
}

// The transform layer's messages have status 1 and bring their own first word.
int Terminal::report(const zerith::Error& error) {
  print(error.status() == 1 ? Message::kReport : Message::kError, error.what());
  return error.status();
}

namespace {

// Without memory: no string, no stream. No destructors either, since other threads may be at work.
void out_of_memory() {
  constexpr std::string_view kText =
      "zerith: error: no memory left; make nx, ny or nz smaller, or free memory on this machine\n";
  std::fflush(stdout);
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kText.data(), kText.size());
  std::_Exit(255);
}

}  // namespace

void install_memory_handler() {
  std::set_new_handler(out_of_memory);
}
