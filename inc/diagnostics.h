// Messages to the user on the error stream, each on a line of its own that begins "zerith: ".
//
// Standard output is the log, whose every byte is defined; whatever else there is to say goes here.
#pragma once

#include <string>

namespace diagnostics {

// Quiet mode silences warnings and notes, never errors. Off until set.
void set_quiet(bool is_quiet);

// Something the user should know while the run goes on.
void warn(const std::string& text);

// Whether notes are shown: the error stream is a terminal and the run isn't quiet.
bool shows_notes();

// A courtesy to the person at the terminal; not written to a file or a pipe.
void note(const std::string& text);

// Overwrites the line of the last call: a progress display. Shown like a note; an empty text clears
// the line.
void progress(const std::string& text);

// The run cannot go on: says why and ends the process with exit(-1), seen as status 255.
[[noreturn]] void fail(const std::string& text);

}  // namespace diagnostics
