// The grammar of the configuration file.
#pragma once

#include <istream>
#include <string>

#include "system/description.h"

// Reads the lines of the file into the records of d. Derives nothing: spacings, the unit and the
// second pair of each material are unchanged.
void parse_lines(std::istream& file, const std::string& filename, Description& d, bool is_quiet);
