// What the values of a description must fulfil together.
#pragma once

#include "system/description.h"

// Throws Error and a message with file and line if a description makes no sense
// in a point for which no older file can be right: a mode without its radius, a monitor without its
// file, an edge wider than half the domain and the like.
void require_sense(const Description& d);
