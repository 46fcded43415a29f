// Errors, which are exceptions, and the messages of a run, which go to its observer.
//
// A library neither prints messages nor ends the process. Both are left to main.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace zerith {

// A place in a file. Line 0 means the whole file; an empty file means no place.
struct Place {
  std::string file;
  int line = 0;
};

// The run cannot continue.
class Error : public std::runtime_error {
 public:
  // text begins with the place, "FILE: " or "FILE: line N: ", if there is one. status: the exit
  // status of the process.
  explicit Error(const std::string& text, int status = 255)
      : std::runtime_error(text), status_(status) {}

  [[nodiscard]] int status() const { return status_; }
  // The place with a line number at the beginning of the text.
  [[nodiscard]] Place place() const;

 private:
  int status_;
};

enum class Message {
  kWarning,   // the user should know this while the run continues
  kError,     // something is lost and the run continues
  kReport,    // requested output
  kNote,      // a hint to a user at a terminal
  kProgress,  // replaces the last one; an empty text removes it
};

// The message as a line without its end: "zerith: warning: TEXT".
std::string line_of(Message kind, const std::string& text);

// Receives the messages of one run.
class Observer {
 public:
  Observer() = default;
  virtual ~Observer() = default;
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;

  // Keeps warnings and shows all messages.
  void take(Message kind, const std::string& text);
  // Of the run so far, in order.
  [[nodiscard]] const std::vector<std::string>& warnings() const { return warnings_; }
  // Whether notes and progress are shown.
  [[nodiscard]] virtual bool shows_notes() const { return false; }

 protected:
  virtual void show(Message kind, const std::string& text) = 0;

 private:
  std::vector<std::string> warnings_;
};

// Sends messages of this thread to the observer while it lives. Without one they are dropped.
class ObserverScope {
 public:
  explicit ObserverScope(Observer& observer);
  ~ObserverScope();
  ObserverScope(const ObserverScope&) = delete;
  ObserverScope& operator=(const ObserverScope&) = delete;

 private:
  Observer* before_;
};

}  // namespace zerith

// Messages to the observer of this thread.
namespace diagnostics {

void warn(const std::string& text);
void error(const std::string& text);
void tell(const std::string& text);  // Message::kReport
void note(const std::string& text);
void progress(const std::string& text);

bool shows_notes();
const std::vector<std::string>& warnings();

// Throws zerith::Error of status 255.
[[noreturn]] void fail(const std::string& text);

}  // namespace diagnostics
