// The command line, read once.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "system/system.h"

constexpr int DEFAULT_KERNEL = 0;
constexpr int DEFAULT_BLOCK_SIZE = 16;
constexpr plane DEFAULT_PLANE = XY;
constexpr int DEFAULT_LAYER = 0;

// What the options ask for. Nothing changes it once it is read.
struct Options {
  std::string program;  // as invoked
  std::string text;     // all words, for files that tell where they come from

  bool is_quiet = false;
  std::string config_file = "<none>";
  bool is_store = false, is_cpu = false, is_gpu = false, is_compare = false;
  std::string record;           // file name of the run record
  plane p = DEFAULT_PLANE;      // which cross-sections the files hold
  int layer = DEFAULT_LAYER;    // -1: all
  int kernel = DEFAULT_KERNEL;  // as the device branch reads them
  int blockSize = DEFAULT_BLOCK_SIZE;

  bool is_fast = false;    // sum the plane waves by transforms
  bool is_stream = false;  // hold a few slices, with the direct sum too
  bool is_strict = false;  // warnings of the set-up are errors
  bool is_check = false;   // set up, report, write nothing
  bool is_plain_progress = false;
  std::optional<int> threads;  // 0: all cores
  double tolerance = 0;        // of --fast, relative; 0: exact
  std::string field_file;      // a monitor of the whole field
  std::string checkpoint;      // file
  double checkpoint_seconds = 60;
  std::vector<std::string> overrides;  // SECTION.KEY=VALUE

  Options() = default;
  // Warns of what it does not know. Values of our own options that cannot be meant throw
  // Error.
  Options(int argc, char* argv[]);

  // An option that ends the line has no value, which is noticed when the value is needed: throws
  // Error if one of these two, without dashes, is so.
  void require_value(const char* short_form, const char* long_form) const;

 private:
  std::string dangling_;  // the option that ends the line without its value, dashes included
};

int all_cores();
// How many threads the options ask for; where they say nothing, all cores with --fast, else one.
int threads_of(const Options& options);
