#include <thread>

#include "main/terminal.h"
#include "support/errors.h"

namespace {

using zerith::Error;

TEST(Errors, NameTheirPlace) {
  const struct {
    const char* text;
    const char* file;
    int line;
  } rows[] = {{"a b.cfg: line 12: no mode", "a b.cfg", 12},
              {"a.cfg: no mode", "", 0},
              {"the line has: line", "", 0},
              {"a: line of sight", "", 0}};
  for (const auto& [text, file, line] : rows) {
    const zerith::Place place = Error(text).place();
    EXPECT_EQ(place.file, file) << text;
    EXPECT_EQ(place.line, line) << text;
  }
}

TEST(Observers, BelongToAScopeAndAThread) {
  const Messages outer;
  diagnostics::warn("a");
  {
    const Messages inner;
    diagnostics::warn("b");
    diagnostics::error("c");
    std::thread([] {
      EXPECT_TRUE(diagnostics::warnings().empty());
      diagnostics::warn("dropped");
      const Messages own;
      diagnostics::tell("d");
      EXPECT_EQ(own.text(), "zerith: d\n");
    }).join();
    EXPECT_EQ(inner.text(), "zerith: warning: b\nzerith: error: c\n");
    EXPECT_EQ(diagnostics::warnings(), std::vector<std::string>{"b"});
  }
  EXPECT_EQ(outer.text(), "zerith: warning: a\n");
}

std::string printed(bool is_quiet, const std::string& name, int& status, const Error& error) {
  Terminal terminal(is_quiet);
  if (!name.empty()) terminal.set_name(name);
  const zerith::ObserverScope scope(terminal);
  testing::internal::CaptureStderr();
  status = terminal.status_of([&]() -> int {
    diagnostics::warn("w");
    diagnostics::tell("t");
    diagnostics::note("n");  // there is no terminal
    diagnostics::progress("p");
    diagnostics::error("e");
    throw error;
  });
  return testing::internal::GetCapturedStderr();
}

TEST(ATerminal, PrintsMessagesAndReturnsTheStatusOfTheError) {
  int status = 0;
  EXPECT_EQ(printed(false, "", status, Error("x")),
            "zerith: warning: w\nzerith: t\nzerith: error: e\nzerith: error: x\n");
  EXPECT_EQ(status, 255);
  EXPECT_EQ(printed(true, "", status, Error("ERROR: x.", 1)),
            "zerith: error: e\nzerith: ERROR: x.\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(printed(false, "rank 2", status, Error("x")),
            "zerith: error: rank 2: e\nzerith: error: rank 2: x\n");
  EXPECT_EQ(Terminal(true).status_of([] { return 7; }), 7);
}

}  // namespace
