// Option readers without a table of options. Each reader scans all of argv for one keyword, with
// one dash or two. Unknown options are ignored.
#pragma once

#include <string>

// Whether an element of argv is the keyword. Checks every element, including the values of other
// options.
bool chCommandLineGetBool(const char* keyword, int argc, char* argv[]);

// Text to value: int by strtol in base 10, truncated to int; string unchanged.
void chCommandLinePassback(int* p, const char* s);
void chCommandLinePassback(std::string* p, const char* s);

// Stores the element after the keyword, whatever it is; the last occurrence wins. Returns whether
// the keyword was found; if not, *p is unchanged. Throws Error if a keyword is the last element.
// Instantiated for int and std::string.
template <typename T>
bool chCommandLineGet(T* p, const char* keyword, int argc, char* argv[]);
