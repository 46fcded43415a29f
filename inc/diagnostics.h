// Messages to the user on the error stream, each on a line of its own that begins "zerith: ".
//
// Standard output is the log, whose every byte is defined; whatever else there is to say goes here.
#pragma once

#include <string>
#include <vector>

namespace diagnostics {

// Quiet mode silences warnings and notes, never errors. Off until set.
void set_quiet(bool is_quiet);

// For one of several processes of a run, all but the first of which have a name: from now on it
// keeps to itself what is not an error, and says under the name what is.
void speak_as(const std::string& name);

// Something the user should know while the run goes on. Kept, shown or not.
void warn(const std::string& text);

// What has been warned of so far, in order.
const std::vector<std::string>& warnings();
void forget_warnings();  // as before the next of several runs in a process

// Something is lost and the run goes on: said in quiet mode too.
void error(const std::string& text);

// Whether notes are shown: the error stream is a terminal and the run isn't quiet.
bool shows_notes();

// Something that was asked for: a line whether or not a terminal is there; quiet mode silences it.
void tell(const std::string& text);

// A courtesy to the person at the terminal; not written to a file or a pipe.
void note(const std::string& text);

// Overwrites the line of the last call: a progress display. Shown like a note; an empty text clears
// the line.
void progress(const std::string& text);

// The run cannot go on: says why and ends the process with exit(-1), seen as status 255.
[[noreturn]] void fail(const std::string& text);

// From now on fail calls leave instead of exit: what a test, a fuzzer or one of several processes
// does when a run cannot go on. leave must not return. Null for exit again.
void on_failure(void (*leave)());

}  // namespace diagnostics
