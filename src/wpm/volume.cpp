#include "system/index_stack.h"
#include "wpm/wpm.h"

void init_N(cpx* N, struct_sysOptions* so, const std::vector<struct_layer>* layers, bool is_quiet) {
  const IndexStack stack(*so, *layers, is_quiet);
  stack.paint_onto(N, stack.whole());
}
