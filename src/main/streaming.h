// Which runs hold slices instead of volumes, and which go through the march.
#pragma once

#include <string>

#include "main/run.h"

// Whether the device branch is one that can take steps: a kernel that propagates and a block that
// can be launched. Others run on whole volumes.
bool device_can_step(const Options& options);

// Whether a run that may be streamed is; false without --fast and --stream.
bool can_be_streamed(const Run& run);

// Why a run with --fast or --stream is not: "", or "; " and the reason.
std::string why_not_streamed(const Run& run);

// Whether something is asked for that only the march does: another sum, a monitor, a mask, a
// checkpoint.
bool needs_march(const Run& run);
