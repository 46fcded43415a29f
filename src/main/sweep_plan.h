// What a sweep is to run: read from the command line once, before anything is started.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sweep {

// A key of the configuration and the texts that it takes in turn.
struct Axis {
  std::string key;  // SECTION.KEY, as --set takes it
  std::vector<std::string> values;
};

// "KEY=FROM:TO:STEP", both ends included, or "KEY=VALUE,VALUE,...". The values of a range have
// twelve significant digits: 0.1:0.3:0.1 is 0.1, 0.2, 0.3. Ends the process with status 255 if the
// text is neither, if the range is empty or if a value stands twice.
Axis read_axis(const std::string& text);

struct Plan {
  std::vector<Axis> axes;                // one to three
  int jobs = 1;                          // points at a time
  int share = 1, shares = 1;             // the share-th of so many parts, from 1
  std::string table = "sweep.csv";       // one row for each point
  std::string folder = "sweep";          // holds one folder for each point
  std::string configuration = "<none>";  // with its whole path, if one is named
  std::vector<std::string> overrides;    // of --set
  std::vector<std::string> command;      // of each point, but for what is swept
  bool is_quiet = false;
  bool retries_failed = false;
};

// Reads --sweep, --jobs, --points, --table, --folder and --retry-failed; the other options go on to
// every point, the configuration with its whole path. Ends the process with status 255 where they
// make no sense.
Plan read_plan(int argc, char* argv[]);

constexpr std::int64_t kMostPoints = 1'000'000;

// All combinations of the values.
std::int64_t combinations(const std::vector<Axis>& axes);

// The values of one of them, an element an axis; the last axis changes fastest.
std::vector<std::string> combination(const std::vector<Axis>& axes, std::int64_t index);

// "layer3.z=150,wave.lambda=1": the name of the point's folder. A slash in a value becomes %2F.
std::string point_name(const std::vector<Axis>& axes, const std::vector<std::string>& values);

}  // namespace sweep
