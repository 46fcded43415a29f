#include "device.h"

namespace standin {

bool Calls::take(Call call) {
  ++counts_[static_cast<std::size_t>(call)];
  return left_ == 0 || call != failing_ || --left_ != 0;
}

int count_of(Call call) {
  const std::lock_guard lock(device().mutex);
  return device().calls.count(call);
}

void count_anew() {
  const std::lock_guard lock(device().mutex);
  device().calls.count_anew();
}

void fail_call(Call call, int n) {
  const std::lock_guard lock(device().mutex);
  device().calls.fail(call, n);
}

}  // namespace standin
