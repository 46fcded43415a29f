// Names of units, for people.
#pragma once

#include <string>

#include "system/grid.h"

// The unit that the configuration chose for lengths: "um"; "units" of its own where it has no name.
std::string length_unit(const Grid& grid);

// A number in as few digits as tell it, six at most.
std::string in_words(double value);

// Bytes in a unit that suits them: "12.5 GB".
std::string bytes_in_words(double bytes);
