// Option readers. There is no table of options and no pass over the line as a whole: each reader
// walks all of argv for one keyword, with one dash or two, and unknown options are nobody's
// concern.
#pragma once

#include <string>

// Whether an element of argv is the keyword. Looks at every element, also at those that are values
// of other options.
bool chCommandLineGetBool(const char* keyword, int argc, char* argv[]);

// Text to value: the int as by strtol in base 10 truncated to int, the string as it stands.
void chCommandLinePassback(int* p, const char* s);
void chCommandLinePassback(std::string* p, const char* s);

// Stores the element behind the keyword, whatever it looks like; the last occurrence wins. Returns
// whether the keyword was found; *p is left alone if not. A keyword that ends the line has no
// value: that is reported and throws Error. Instantiated for int and std::string.
template <typename T>
bool chCommandLineGet(T* p, const char* keyword, int argc, char* argv[]);
