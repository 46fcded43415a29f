// Which run this is: what its results depend on, in few characters.
#pragma once

#include <string>

#include "main/run.h"

// 16 hexadecimal digits of a 64-bit FNV-1a hash.
std::string hash_of(const std::string& text);

// Of the configuration's text, its overrides, the input files that it names, the options that
// change results and the version.
std::string identity_of(const Run& run);
