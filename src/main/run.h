// What the stages of one run share.
#pragma once

#include <cufft.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "chTimer.h"
#include "log.h"
#include "main/checkpoint.h"
#include "main/options.h"
#include "system/description.h"
#include "system/index_stack.h"
#include "wpm/axes.h"
#include "wpm/edge.h"
#include "wpm/modes.h"
#include "wpm/screens.h"
#include "wpm/sink.h"
#include "wpm/wpm.h"

// Zeroed memory of a known size, so a voxel that nothing writes is 0 in every run.
template <typename T>
class HostArray {
 public:
  HostArray() = default;
  // Failure is reported as check() does and ends the process with the bytes that were asked for.
  HostArray(std::size_t count, const char* name);
  [[nodiscard]] T* data() const { return data_.get(); }

 private:
  struct Free {
    void operator()(T* memory) const { std::free(memory); }
  };
  std::unique_ptr<T[], Free> data_;
};

struct Run {
  explicit Run(const Options& options_);

  const Options options;
  Log log;
  ChTimer initTimer;

  Description description;
  bool is_TE = true;  // what the device is told; a quiet run leaves it true whatever the file says
  Grid grid;
  wpm::Axes axes;
  double lambda = 0;       // m
  double k0 = 0;           // rad/m
  double entry_index = 0;  // the real index of the first sample of slice 0

  std::unique_ptr<IndexStack> stack;
  bool is_streamed = false;  // slices instead of volumes
  Window window;             // the rows of this rank: all of them if it is the only one
  // Whole volumes, [nz][ny][nx]; of a streamed run the first slice of each, which of several ranks
  // the first has.
  HostArray<cpx> N, E;
  HostArray<double> F;
  HostArray<cufftDoubleComplex> h_E;  // the device's field, for the comparison

  std::optional<RunState> resumed;  // where the run goes on
  std::string identity;             // which run this is, for checkpoints

  // What hangs on the march; made before anything is written, so that what is wrong is said then.
  std::vector<std::unique_ptr<Sink>> monitors;  // of the branch whose slices they get
  std::unique_ptr<ScreenMask> screens;          // null without any
  std::unique_ptr<EdgeMask> edge;               // null without one

  double kernel_ms = 0, cpu_ms = 0;  // what the record shows; 0 where nothing ran

  [[nodiscard]] StepOptions step_options() const;
  [[nodiscard]] std::string place(const std::string& text) const {
    return options.config_file + ": " + text;
  }
};
