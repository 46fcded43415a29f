#include "wpm/stepper.h"

const char* name_of(Sum sum) {
  switch (sum) {
    case Sum::kTransforms:
      return "transforms";
    case Sum::kInterpolated:
      return "transforms, pairs interpolated";
    case Sum::kKnown:
      return "NaN everywhere";
    case Sum::kDirect:
      break;
  }
  return "direct sum";
}
