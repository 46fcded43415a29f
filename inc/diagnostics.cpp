#include "diagnostics.h"

#include <cctype>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace zerith {
namespace {

thread_local Observer* current = nullptr;

}  // namespace

Place Error::place() const {
  constexpr std::string_view kLine = ": line ";
  const std::string text = what();
  const std::size_t end = text.find(kLine);
  const std::size_t digits = end + kLine.size();
  if (end == std::string::npos || digits >= text.size() ||
      std::isdigit(static_cast<unsigned char>(text[digits])) == 0)
    return {};
  return {text.substr(0, end), std::atoi(text.c_str() + digits)};
}

std::string line_of(Message kind, const std::string& text) {
  const char* const word = kind == Message::kWarning ? "warning: "
                           : kind == Message::kError ? "error: "
                                                     : "";
  return std::string("zerith: ") + word + text;
}

void Observer::take(Message kind, const std::string& text) {
  if (kind == Message::kWarning) warnings_.push_back(text);
  show(kind, text);
}

ObserverScope::ObserverScope(Observer& observer) : before_(std::exchange(current, &observer)) {}
ObserverScope::~ObserverScope() {
  current = before_;
}

}  // namespace zerith

namespace diagnostics {

using zerith::Message;

namespace {

void send(Message kind, const std::string& text) {
  if (zerith::current != nullptr) zerith::current->take(kind, text);
}

}  // namespace

void warn(const std::string& text) {
  send(Message::kWarning, text);
}
void error(const std::string& text) {
  send(Message::kError, text);
}
void tell(const std::string& text) {
  send(Message::kReport, text);
}
void note(const std::string& text) {
  send(Message::kNote, text);
}
void progress(const std::string& text) {
  send(Message::kProgress, text);
}

bool shows_notes() {
  return zerith::current != nullptr && zerith::current->shows_notes();
}

const std::vector<std::string>& warnings() {
  static const std::vector<std::string> none;
  return zerith::current != nullptr ? zerith::current->warnings() : none;
}

void fail(const std::string& text) {
  throw zerith::Error(text);
}

}  // namespace diagnostics
