// Warnings about likely mistakes in a scene before it is run.
#pragma once

#include "system/description.h"

// Warns, with file and line, of a grid too coarse for the wavelength. Warns of waves that are dark,
// not finite, replaced, outside the domain or discontinuous at its edges. Warns of layers that are
// cut, rounded up, empty or have keys that their kind does not use.
void advise(const Description& d);
