// A configuration given as text, and what the parser makes of it.
#pragma once

#include <gtest/gtest.h>

#include <sstream>

#include "support/errors.h"
#include "support/process.h"
#include "system/system.h"

inline std::string global(const std::string& line) {
  return "[global]\n" + line;
}

struct Parsed {
  explicit Parsed(const std::string& text) {
    const TempDir directory;
    directory.write("a.cfg", text);
    const std::string name = directory.path("a.cfg").string();
    so.nx = -5;  // parse begins with a reset
    testing::internal::CaptureStdout();
    const Messages messages;
    parse(name, &so, &layers, &waves, false);
    log = testing::internal::GetCapturedStdout();
    warnings = messages.text();
    EXPECT_EQ(so.sysname, name);
    EXPECT_TRUE(so.updated);
  }

  // "nx", then "w" and the amplitude of each wave, "l" and the thickness of each layer.
  [[nodiscard]] std::string digest() const {
    std::ostringstream text;
    text << so.nx;
    for (const struct_emfield& wave : waves) text << " w" << wave.amp;
    for (const struct_layer& l : layers) text << " l" << l.z;
    return text.str();
  }

  struct_sysOptions so;
  std::vector<struct_layer> layers;
  std::vector<struct_emfield> waves;
  std::string log, warnings;
};
