// The sinks of the [monitor] sections, one file for each type. where: "FILE: line N", which begins
// the messages of errors that end the process.
#pragma once

#include <memory>
#include <string>

#include "io/io.h"

std::unique_ptr<Sink> make_field_sink(const Monitor& monitor, const Grid& grid,
                                      const RunContext& run, const std::string& where);
std::unique_ptr<Sink> make_beam_sink(const Monitor& monitor, const Grid& grid,
                                     const RunContext& run, const std::string& where);
std::unique_ptr<Sink> make_overlap_sink(const Monitor& monitor, const Grid& grid,
                                        const RunContext& run, const std::string& where);
std::unique_ptr<Sink> make_focus_sink(const Monitor& monitor, const Grid& grid,
                                      const RunContext& run, const std::string& where);
