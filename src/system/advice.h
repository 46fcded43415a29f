// What can be said of a scene before it is run: what is likely no one's intention.
#pragma once

#include "system/description.h"

// Warns, with file and line, of a grid too coarse for the wavelength, of waves that are dark, not
// finite, replaced, out of the domain or at odds with its edges, and of layers that are cut,
// rounded up, empty or given keys that their kind does not use. Says nothing of a scene in order.
void advise(const Description& d);
