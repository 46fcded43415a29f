// The program's errors and messages to the observer, for tests.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "diagnostics.h"

// Whether work throws Error of this status. The message must match the pattern, a POSIX extended
// regular expression.
template <typename Work>
testing::AssertionResult ends_in_error(Work work, const std::string& pattern, int status = 255) {
  try {
    work();
  } catch (const zerith::Error& error) {
    const std::string text = error.what();
    if (error.status() != status)
      return testing::AssertionFailure() << text << ": status " << error.status();
    if (testing::internal::RE::PartialMatch(text, testing::internal::RE(pattern)))
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << text << ": does not match " << pattern;
  }
  return testing::AssertionFailure() << "no error, expected " << pattern;
}

#define EXPECT_ERROR(statement, pattern) EXPECT_TRUE(ends_in_error([&] { statement; }, pattern))

// During its lifetime, takes the messages of this thread.
class Messages : public zerith::Observer {
 public:
  [[nodiscard]] const std::string& text() const { return text_; }  // one per line
  void clear() { text_.clear(); }

 protected:
  void show(zerith::Message kind, const std::string& text) override {
    text_ += line_of(kind, text) + "\n";
  }

 private:
  std::string text_;
  zerith::ObserverScope scope_{*this};
};
