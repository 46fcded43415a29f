// Conditions on the values of a description together.
#pragma once

#include "system/description.h"

// Throws Error, with file and line, on values that no valid older file can have: a mode without its
// radius, a monitor without its file, an edge wider than half the domain and the like.
void require_sense(const Description& d);
